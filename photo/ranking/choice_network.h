// The small convolutional network that says where in a picture a crop's parts are welcome.
#ifndef VISTATRIM_PHOTO_RANKING_CHOICE_NETWORK_H
#define VISTATRIM_PHOTO_RANKING_CHOICE_NETWORK_H

#include <vector>

#include "ranking/choice_model.h"
#include "ranking/input_grid.h"

namespace vistaTrim::photo {

// One plane of kGridCells for each output of the last layer. The same bits on every machine.
std::vector<float> RunChoiceNetwork(const ChoiceModel& model, const InputGrid& inputs);

} // namespace vistaTrim::photo

#endif
