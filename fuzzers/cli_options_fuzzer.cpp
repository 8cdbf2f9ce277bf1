// Parses command lines of any text: each is accepted or rejected, and accepted values are within
// their limits.
#include <cmath>
#include <iostream>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "options/options.h"
#include "options/text_values.h"
#include "vistaTrimPhoto/colour.h"
#include "vistaTrimPhoto/geometry.h"

using namespace fuzzing;
using namespace vistaTrim;
using namespace vistaTrim::cli;
using namespace vistaTrim::photo;

namespace {

void CheckTexts(const std::string& text)
{
    if (const auto ratio = ParseRatio(text)) {
        Demand(ratio->Width > 0 && ratio->Height > 0, "terms of a ratio");
        Demand(std::isfinite(ratio->Value()) && ratio->Value() > 0.0, "value of a ratio");
    }
    if (const auto size = ParseSize(text))
        Demand(size->Width > 0 && size->Height > 0, "sides of a size");
    if (const auto rect = ParseRect(text))
        Demand(rect->X >= 0 && rect->Y >= 0 && rect->Width > 0 && rect->Height > 0 &&
                   rect->X + rect->Width > 0 && rect->Y + rect->Height > 0,
               "sides of a rectangle");
    if (const auto numbers = ParseNumbers(text))
        for (const double number : *numbers)
            Demand(std::isfinite(number), "a number is finite");
    if (const auto colour = ParseColour(text))
        for (const double channel : *colour)
            Demand(channel >= 0.0 && channel <= 255.0, "a colour channel is 0 to 255");
}

void CheckOptions(const Options& options)
{
    const Request& request = options.Request;
    Demand(!options.Photos.empty(), "at least one photograph");
    Demand(request.Top >= 1 && request.Top <= 10000, "number of crops");
    Demand(request.Density >= 1 && request.Density <= 500, "density");
    Demand(options.Workers >= 0 && options.Workers <= 1024, "workers");
    const int quality = options.CropFiles.Quality.value_or(photo::kDefaultQuality);
    Demand(quality >= 1 && quality <= 100, "quality");
    for (const double scale : request.Scales)
        Demand(scale > 0.0 && scale <= 1.0, "scale");
    for (const Measure& measure : kMeasures)
        if (measure.Weight != nullptr)
            Demand(std::isfinite(request.Weights.*measure.Weight), "weight");
    Demand(!request.Size || (request.Aspects.empty() && request.Scales.empty()),
           "a size excludes ratios and scales");
    Demand(!options.Resume || !options.Output.empty(), "resuming needs an output file");
    Demand(!(options.Resume && options.Force), "a file is resumed or replaced, not both");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    SilenceKernelMessages();
    std::cout.rdbuf(nullptr);
    return 0;
}

// The input is the arguments, one per line.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    std::vector<std::string> arguments(1, "vistatrim");
    arguments.emplace_back();
    for (size_t i = 0; i < count; ++i) {
        if (bytes[i] == '\n')
            arguments.emplace_back();
        else if (bytes[i] != 0)
            arguments.back().push_back(static_cast<char>(bytes[i]));
    }
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) {
        CheckTexts(argument);
        pointers.push_back(argument.c_str());
    }
    const CommandLine line = ParseCommandLine(static_cast<int>(pointers.size()), pointers.data());
    if (line.ExitStatus)
        Demand(*line.ExitStatus == 0 || *line.ExitStatus == kUsageFault, "exit status");
    else
        CheckOptions(line.Values);
    return 0;
}
