#include "samples/vocabulary.h"

namespace samples {

namespace {

// Categories: 1 engine and transmission, 2 chassis and brakes, 3 electrical and body, 4 and 6 accessories,
// 5 consumables, 7 others; 0 is not for ordering.
constexpr Family kFamilies[] = {
    {"OIL FILTER", 1, 90, 480, 3},
    {"FUEL FILTER", 1, 140, 900, 2},
    {"AIR FILTER ELEMENT", 1, 180, 1200, 2, Season::Summer},
    {"TIMING BELT", 1, 650, 3200, 1},
    {"FAN BELT", 1, 160, 780, 2, Season::Summer},
    {"PISTON RING SET", 1, 900, 5200, 1},
    {"ENGINE MOUNTING", 1, 320, 1800, 2},
    {"CYLINDER HEAD GASKET", 1, 480, 3600, 1},
    {"ROCKER COVER GASKET", 1, 60, 380, 2},
    {"INTAKE VALVE", 1, 190, 640, 8},
    {"EXHAUST VALVE", 1, 210, 720, 8},
    {"WATER PUMP ASSY", 1, 1100, 5400, 1, Season::Summer},
    {"THERMOSTAT", 1, 280, 950, 1, Season::Summer},
    {"RADIATOR HOSE \xC2\xBD INCH", 1, 120, 640, 2, Season::Summer},
    {"OIL SEAL \xC3\x98"
     "42",
     1, 45, 320, 4},
    {"CRANKSHAFT BEARING SET", 1, 700, 3900, 1},
    {"CLUTCH PLATE", 1, 1200, 5200, 1},
    {"PRESSURE PLATE", 1, 1600, 6800, 1},
    {"RELEASE BEARING", 1, 380, 1500, 1},
    {"GEAR SHIFT CABLE", 1, 420, 1900, 1},
    {"INJECTOR NOZZLE", 1, 1500, 7200, 4},
    {"BRAKE PAD SET", 2, 620, 3400, 2},
    {"BRAKE SHOE SET", 2, 480, 2100, 2},
    {"BRAKE DISC", 2, 1400, 4900, 2},
    {"MASTER CYLINDER KIT", 2, 220, 1300, 1},
    {"WHEEL CYLINDER", 2, 260, 980, 2},
    {"SHOCK ABSORBER", 2, 1100, 4800, 2},
    {"SUSPENSION BUSH", 2, 70, 520, 4},
    {"BALL JOINT", 2, 310, 1400, 2},
    {"TIE ROD END", 2, 290, 1250, 2},
    {"WHEEL BEARING", 2, 480, 2600, 2},
    {"DRIVE SHAFT BOOT KIT", 2, 180, 860, 2},
    {"U JOINT CROSS", 2, 350, 1600, 2},
    {"LEAF SPRING", 2, 900, 5600, 2},
    {"HUB BOLT", 2, 25, 110, 10},
    {"WHEEL NUT", 2, 15, 70, 20},
    {"CLUTCH CABLE", 2, 120, 560, 1},
    {"HAND BRAKE CABLE", 2, 210, 880, 1},
    {"HEAD LAMP ASSY", 3, 1300, 8200, 1},
    {"TAIL LAMP", 3, 420, 2600, 1},
    {"BULB 12V", 3, 20, 240, 6, Season::Monsoon},
    {"FUSE 15A", 3, 5, 30, 10},
    {"RELAY", 3, 110, 640, 2},
    {"HORN", 3, 240, 1100, 1},
    {"SPARK PLUG", 3, 85, 420, 4},
    {"STARTER BRUSH SET", 3, 90, 360, 1},
    {"WIPER BLADE", 3, 160, 680, 2, Season::Monsoon},
    {"WIPER MOTOR", 3, 1400, 4200, 1, Season::Monsoon},
    {"BATTERY 12V", 3, 3200, 8900, 1, Season::Winter},
    {"DOOR HANDLE", 3, 180, 1400, 2},
    {"DOOR BEADING", 3, 220, 1600, 2, Season::Monsoon},
    {"BUMPER", 3, 1800, 7600, 1},
    {"FENDER", 3, 1500, 5400, 1},
    {"REAR VIEW MIRROR", 3, 380, 3200, 1},
    {"RADIATOR GRILLE", 3, 700, 3900, 1},
    {"SEAT COVER SET", 4, 1800, 7200, 1, Season::Winter},
    {"DRIVER'S FLOOR MAT", 4, 450, 1600, 1, Season::Monsoon},
    {"MUD FLAP SET", 4, 220, 720, 1, Season::Monsoon},
    {"DOOR VISOR SET", 4, 480, 1500, 1, Season::Monsoon},
    {"FOG LAMP KIT", 4, 1600, 5200, 1, Season::Winter},
    {"BODY COVER", 6, 900, 3200, 1},
    {"STEERING COVER", 6, 180, 760, 1},
    {"SUN SHADE", 6, 120, 480, 2, Season::Summer},
    {"ENGINE OIL 15W40", 5, 310, 520, 8, Season::None, true},
    {"GEAR OIL EP90", 5, 280, 460, 4, Season::None, true},
    {"BRAKE FLUID 500ML", 5, 140, 260, 2},
    {"COOLANT GREEN", 5, 190, 340, 4, Season::Summer, true},
    {"GREASE 1KG", 5, 240, 420, 2},
    {"BATTERY WATER", 5, 15, 40, 5, Season::Summer, true},
    {"HOSE BY METRE", 5, 60, 240, 3, Season::None, true},
    {"SERVICE BOOKLET", 7, 40, 120, 2},
    {"SPECIAL TOOL", 0, 800, 9500, 1},
};

constexpr std::string_view kOrvaniModels[] = {"ORVANI S", "ORVANI LX", "ORVANI LX DIESEL", "ORVANI COMBI"};
constexpr std::string_view kOrvaniGroups[] = {"ORVANI PETROL", "ORVANI DIESEL"};
constexpr std::string_view kTejikModels[] = {"TEJIK 12", "TEJIK 16", "TEJIK 16 TIPPER", "TEJIK MINI"};
constexpr std::string_view kTejikGroups[] = {"TEJIK LIGHT", "TEJIK HEAVY"};
constexpr std::string_view kBrindaModels[] = {"BRINDA 35", "BRINDA 45 DX", "BRINDA 60"};
constexpr std::string_view kBrindaGroups[] = {"BRINDA TRACTORS", "BRINDA IMPLEMENTS"};
constexpr std::string_view kZorvaModels[] = {"ZORVA 100", "ZORVA 125 SPORT", "ZORVA CARGO"};
constexpr std::string_view kZorvaGroups[] = {"ZORVA TWO WHEELERS", "ZORVA THREE WHEELERS"};

constexpr Make kFirstMakes[] = {
    {"ORVANI", "OV", kOrvaniModels, kOrvaniGroups},
    {"TEJIK", "TK", kTejikModels, kTejikGroups},
};
constexpr Make kSecondMakes[] = {
    {"BRINDA", "BR", kBrindaModels, kBrindaGroups},
    {"ZORVA", "ZV", kZorvaModels, kZorvaGroups},
};

constexpr std::string_view kPositions[] = {"",         "FRONT",    "REAR",    "FRONT LH", "FRONT RH",
                                           "REAR LH",  "REAR RH",  "UPPER",   "LOWER",    "STD",
                                           "0.25 O/S", "0.50 O/S", "MODIFIED"};

constexpr std::string_view kTowns[] = {"MELAKONDE", "TIRVANURU", "PARVAKOTTE", "JALASARIGE",
                                       "ONDRIPETA", "HIREKOLLU", "NAVAGUDDE",  "SINDHAVARI",
                                       "KOTHAGIRE", "BELAMANGI", "UDAYAPETA",  "RAMGIRIGE"};

constexpr std::string_view kFirms[] = {"ARUNTAL",  "BELMARI", "CHIDRAN", "DORVEKA",  "ELVANTI", "FARSOLI",
                                       "GULVANI",  "HESKARA", "ILMORI",  "JOSTARI",  "KELVADI", "LURMANA",
                                       "MORVETI",  "NILDARA", "OSKALI",  "PELTHARA", "QUVELI",  "RIMSOLA",
                                       "SORVINDA", "TULMARA", "UVELTI",  "VARSUNI",  "WELDARI", "YOSTUNA"};

constexpr std::string_view kTrades[] = {"AUTO SPARES", "MOTOR STORES",  "TRADERS",     "AGENCIES",
                                        "AUTO CENTRE", "SPARES DEPOT",  "ENTERPRISES", "LUBRICANTS",
                                        "BEARINGS",    "AUTO ELECTRIC", "TYRE HOUSE"};

} // namespace

std::span<const Family> families()
{
    return kFamilies;
}

std::span<const Make> makesOf(int company)
{
    return company == 0 ? std::span<const Make>(kFirstMakes) : std::span<const Make>(kSecondMakes);
}

std::span<const std::string_view> positions()
{
    return kPositions;
}

std::span<const std::string_view> townNames()
{
    return kTowns;
}

std::span<const std::string_view> firmNames()
{
    return kFirms;
}

std::span<const std::string_view> firmTrades()
{
    return kTrades;
}

} // namespace samples
