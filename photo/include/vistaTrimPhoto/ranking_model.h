// What ranks the crops: a model of what people choose, compiled in or read from a file.
#ifndef VISTATRIM_PHOTO_RANKING_MODEL_H
#define VISTATRIM_PHOTO_RANKING_MODEL_H

#include <memory>
#include <string>

namespace vistaTrim::photo {

struct ChoiceModel; // internal

// Shared and never changed; null means the model that is compiled in.
using RankingModel = std::shared_ptr<const ChoiceModel>;

// A file that tools/fit_ranking.py wrote. Throws PhotoError (InvalidRequest) that names the file
// and what is wrong with it.
RankingModel ReadRankingModel(const std::string& path);

} // namespace vistaTrim::photo

#endif
