#include "samples/vocabulary.h"

namespace samples {

namespace {

// Categories: 1 engine and transmission, 2 chassis and brakes, 3 electrical and body, 4 and 6 accessories,
// 5 consumables, 7 others; 0 is not for ordering.
constexpr Family kFamilies[] = {
    {"OIL FILTER", 1, 90, 480, 3, Variants::None},
    {"FUEL FILTER", 1, 140, 900, 2, Variants::None},
    {"AIR FILTER ELEMENT", 1, 180, 1200, 2, Variants::None, Season::Summer},
    {"TIMING BELT", 1, 650, 3200, 1, Variants::None},
    {"FAN BELT", 1, 160, 780, 2, Variants::None, Season::Summer},
    {"PISTON RING SET", 1, 900, 5200, 1, Variants::Sizes},
    {"ENGINE MOUNTING", 1, 320, 1800, 2, Variants::Ends},
    {"CYLINDER HEAD GASKET", 1, 480, 3600, 1, Variants::Sizes},
    {"ROCKER COVER GASKET", 1, 60, 380, 2, Variants::None},
    {"INTAKE VALVE", 1, 190, 640, 8, Variants::Sizes},
    {"EXHAUST VALVE", 1, 210, 720, 8, Variants::Sizes},
    {"WATER PUMP ASSY", 1, 1100, 5400, 1, Variants::None, Season::Summer},
    {"THERMOSTAT", 1, 280, 950, 1, Variants::None, Season::Summer},
    {"RADIATOR HOSE ½ INCH", 1, 120, 640, 2, Variants::None, Season::Summer},
    {"OIL SEAL Ø42", 1, 45, 320, 4, Variants::None},
    {"CRANKSHAFT BEARING SET", 1, 700, 3900, 1, Variants::Sizes},
    {"CLUTCH PLATE", 1, 1200, 5200, 1, Variants::Sizes},
    {"PRESSURE PLATE", 1, 1600, 6800, 1, Variants::None},
    {"RELEASE BEARING", 1, 380, 1500, 1, Variants::None},
    {"GEAR SHIFT CABLE", 1, 420, 1900, 1, Variants::None},
    {"INJECTOR NOZZLE", 1, 1500, 7200, 4, Variants::None},
    {"BRAKE PAD SET", 2, 620, 3400, 2, Variants::Ends},
    {"BRAKE SHOE SET", 2, 480, 2100, 2, Variants::Ends},
    {"BRAKE DISC", 2, 1400, 4900, 2, Variants::Ends},
    {"MASTER CYLINDER KIT", 2, 220, 1300, 1, Variants::None},
    {"WHEEL CYLINDER", 2, 260, 980, 2, Variants::Ends},
    {"SHOCK ABSORBER", 2, 1100, 4800, 2, Variants::Sides},
    {"SUSPENSION BUSH", 2, 70, 520, 4, Variants::Sides},
    {"BALL JOINT", 2, 310, 1400, 2, Variants::Sides},
    {"TIE ROD END", 2, 290, 1250, 2, Variants::Sides},
    {"WHEEL BEARING", 2, 480, 2600, 2, Variants::Sides},
    {"DRIVE SHAFT BOOT KIT", 2, 180, 860, 2, Variants::Sides},
    {"U JOINT CROSS", 2, 350, 1600, 2, Variants::Sizes},
    {"LEAF SPRING", 2, 900, 5600, 2, Variants::Sides},
    {"HUB BOLT", 2, 25, 110, 10, Variants::Ends},
    {"WHEEL NUT", 2, 15, 70, 20, Variants::Ends},
    {"CLUTCH CABLE", 2, 120, 560, 1, Variants::None},
    {"HAND BRAKE CABLE", 2, 210, 880, 1, Variants::Sides},
    {"HEAD LAMP ASSY", 3, 1300, 8200, 1, Variants::Sides},
    {"TAIL LAMP", 3, 420, 2600, 1, Variants::Sides},
    {"BULB 12V", 3, 20, 240, 6, Variants::None, Season::Monsoon},
    {"FUSE 15A", 3, 5, 30, 10, Variants::None},
    {"RELAY", 3, 110, 640, 2, Variants::None},
    {"HORN", 3, 240, 1100, 1, Variants::None},
    {"SPARK PLUG", 3, 85, 420, 4, Variants::None},
    {"STARTER BRUSH SET", 3, 90, 360, 1, Variants::None},
    {"WIPER BLADE", 3, 160, 680, 2, Variants::Sides, Season::Monsoon},
    {"WIPER MOTOR", 3, 1400, 4200, 1, Variants::None, Season::Monsoon},
    {"BATTERY 12V", 3, 3200, 8900, 1, Variants::None, Season::Winter},
    {"DOOR HANDLE", 3, 180, 1400, 2, Variants::Sides},
    {"DOOR BEADING", 3, 220, 1600, 2, Variants::Sides, Season::Monsoon},
    {"BUMPER", 3, 1800, 7600, 1, Variants::Sides},
    {"FENDER", 3, 1500, 5400, 1, Variants::Sides},
    {"REAR VIEW MIRROR", 3, 380, 3200, 1, Variants::Sides},
    {"RADIATOR GRILLE", 3, 700, 3900, 1, Variants::None},
    {"SEAT COVER SET", 4, 1800, 7200, 1, Variants::Ends, Season::Winter},
    {"DRIVER'S FLOOR MAT", 4, 450, 1600, 1, Variants::Ends, Season::Monsoon},
    {"MUD FLAP SET", 4, 220, 720, 1, Variants::Ends, Season::Monsoon},
    {"DOOR VISOR SET", 4, 480, 1500, 1, Variants::None, Season::Monsoon},
    {"FOG LAMP KIT", 4, 1600, 5200, 1, Variants::None, Season::Winter},
    {"BODY COVER", 6, 900, 3200, 1, Variants::None},
    {"STEERING COVER", 6, 180, 760, 1, Variants::None},
    {"SUN SHADE", 6, 120, 480, 2, Variants::None, Season::Summer},
    {"ENGINE OIL 15W40", 5, 310, 520, 8, Variants::None, Season::None, true},
    {"GEAR OIL EP90", 5, 280, 460, 4, Variants::None, Season::None, true},
    {"BRAKE FLUID 500ML", 5, 140, 260, 2, Variants::None},
    {"COOLANT GREEN", 5, 190, 340, 4, Variants::None, Season::Summer, true},
    {"GREASE 1KG", 5, 240, 420, 2, Variants::None},
    {"BATTERY WATER", 5, 15, 40, 5, Variants::None, Season::Summer, true},
    {"HOSE BY METRE", 5, 60, 240, 3, Variants::None, Season::None, true},
    {"SERVICE BOOKLET", 7, 40, 120, 2, Variants::None},
    {"SPECIAL TOOL", 0, 800, 9500, 1, Variants::None},
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

constexpr std::string_view kSides[] = {"LH", "RH"};
constexpr std::string_view kEnds[] = {"FRONT", "REAR"};
constexpr std::string_view kSizes[] = {"STD", "0.25 O/S", "0.50 O/S", "0.75 O/S"};
constexpr std::string_view kRevisions[] = {"", "", "", "MODIFIED", "OLD TYPE", "NEW TYPE"};

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

std::span<const std::string_view> variantsOf(const Family &family)
{
    switch (family.variants) {
    case Variants::Sides:
        return kSides;
    case Variants::Ends:
        return kEnds;
    case Variants::Sizes:
        return kSizes;
    case Variants::None:
        break;
    }
    return kRevisions;
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
