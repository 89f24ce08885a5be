// Writes small files of both versions, made by the engine itself, into a folder of seeds.
#include "tests/jet/sound_file.h"

#include <fstream>
#include <iostream>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "Usage: fuzz_seeds FOLDER\n";
        return 2;
    }
    for (const auto &[version, name] :
         {std::pair(jet::Version::Jet3, "made3.mdb"), std::pair(jet::Version::Jet4, "made4.mdb")}) {
        const support::SoundFile file(version);
        std::ofstream out(std::string(argv[1]) + '/' + name, std::ios::binary);
        out.write(reinterpret_cast<const char *>(file.bytes.data()),
                  static_cast<std::streamsize>(file.bytes.size()));
        if (!out.flush()) {
            std::cerr << "fuzz_seeds: cannot write into " << argv[1] << '\n';
            return 2;
        }
    }
    return 0;
}
