// What ranks the crops: a model of what people choose, compiled in or read from a file.
#ifndef VISTATRIM_PHOTO_RANKING_MODEL_H
#define VISTATRIM_PHOTO_RANKING_MODEL_H

#include <memory>
#include <string>

namespace vistaTrim::photo {

struct ChoiceModel; // internal

// Shared and immutable; null means the compiled-in model.
using RankingModel = std::shared_ptr<const ChoiceModel>;

// Reads a file written by tools/fit_ranking.py. Throws a PhotoError (InvalidRequest) that names the
// file and says what is wrong with it.
RankingModel ReadRankingModel(const std::string& path);

} // namespace vistaTrim::photo

#endif
