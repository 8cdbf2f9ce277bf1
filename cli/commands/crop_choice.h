// The crops that --from names, used instead of a search.
#ifndef VISTATRIM_CLI_COMMANDS_CROP_CHOICE_H
#define VISTATRIM_CLI_COMMANDS_CROP_CHOICE_H

#include <istream>
#include <string>
#include <vector>

#include "batch/chosen_crops.h"
#include "batch/photo_list.h"
#include "batch/photo_result.h"
#include "vistaTrimPhoto/photograph.h"

namespace vistaTrim::cli {

// "-" reads `input`. Throws OptionFileError if it cannot be read or is not a list of crops,
// and ProgramError if it names none.
ChosenCrops ReadChoice(const std::string& file, std::istream& input);

std::vector<ListedPhoto> PhotosOf(const ChosenCrops& chosen);

// Throws ProgramError if the photograph is not the one that the crops were chosen on.
void TakeChosen(const ChosenPhoto& chosen, const photo::Photograph& photograph,
                PhotoResult& result);

} // namespace vistaTrim::cli

#endif
