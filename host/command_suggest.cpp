#include "commands.h"

#include "list_output.h"
#include "photo_error.h"
#include "run_photos.h"

namespace vistaTrim::host {

int RunSuggest(const Options& options, const std::vector<ListedPhoto>& photos)
{
    try {
        ListOutput output(options);
        PhotoSteps steps;
        steps.Work = [&options](const ListedPhoto& photo, PhotoResult& result) {
            ReadAndSuggest(Photograph(photo.Path, options.Background), options, result);
        };
        steps.Emit = [&output](const PhotoResult& result) { output.Write(result); };
        return RunPhotos(options, output.StillToDo(photos), steps);
    } catch (const PhotoError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::host
