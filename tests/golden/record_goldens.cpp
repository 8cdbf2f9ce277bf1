// Writes the golden results to the given folder. Run by scripts/record_goldens.sh.
#include <fstream>
#include <iostream>

#include "golden/golden_results.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: record_goldens FOLDER\n";
        return 2;
    }
    for (const std::string& name : goldenResults::PictureNames()) {
        std::ofstream out(std::string(argv[1]) + "/" + name + ".txt");
        goldenResults::Write(goldenResults::ResultsOf(name), out);
        if (!out.flush()) {
            std::cerr << "cannot write " << argv[1] << "/" << name << ".txt\n";
            return 1;
        }
    }
    return 0;
}
