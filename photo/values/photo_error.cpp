#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

std::string RegionOf(const Wish& wish, const std::string& wishPrefix)
{
    return "the region of " + wishPrefix + NameOf(wish.Kind) + " " + std::to_string(wish.Rect.X) +
           "," + std::to_string(wish.Rect.Y) + "," + std::to_string(wish.Rect.Width) + "," +
           std::to_string(wish.Rect.Height) + " ";
}

} // namespace

PhotoError::PhotoError(Kind kind, const std::string& text)
    : std::runtime_error(text), Why(kind), Fault(text)
{
}

PhotoError::PhotoError(Kind kind, const Wish& wish, const std::string& text)
    : std::runtime_error(RegionOf(wish, "") + text), Why(kind), About(wish), Fault(text)
{
}

PhotoError::Kind PhotoError::GetKind() const
{
    return Why;
}

const std::optional<Wish>& PhotoError::ConcernedWish() const
{
    return About;
}

std::string PhotoError::Text(const std::string& wishPrefix) const
{
    return About ? RegionOf(*About, wishPrefix) + Fault : Fault;
}

} // namespace vistaTrim::photo
