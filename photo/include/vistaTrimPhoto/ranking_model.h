// What ranks the crops: a model of what people choose, compiled in or read from a text.
#ifndef VISTATRIM_PHOTO_RANKING_MODEL_H
#define VISTATRIM_PHOTO_RANKING_MODEL_H

#include <memory>
#include <string>

namespace vistaTrim::photo {

struct ChoiceModel; // internal

// Shared and immutable; null means the compiled-in model.
using RankingModel = std::shared_ptr<const ChoiceModel>;

// Reads what tools/fit_ranking.py writes. `source` names the text in messages. Throws a PhotoError
// (InvalidRequest) that names it and says what is wrong with it.
RankingModel ReadRankingModel(const std::string& text, const std::string& source);

} // namespace vistaTrim::photo

#endif
