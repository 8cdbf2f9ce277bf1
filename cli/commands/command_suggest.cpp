#include "commands/commands.h"

#include "batch/program_error.h"
#include "batch/run_photos.h"
#include "output/list_output.h"

namespace vistaTrim::cli {

int RunSuggest(const Options& options, const std::vector<ListedPhoto>& photos)
{
    try {
        ListOutput output(options);
        PhotoSteps steps;
        steps.Work = [&options](const ListedPhoto& photo, PhotoResult& result) {
            result.Found = Analyse(OpenPhoto(options, photo)).Suggest(options.Request);
        };
        steps.Emit = [&output](const PhotoResult& result) { output.Write(result); };
        return RunPhotos(options, output.StillToDo(photos), steps);
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::cli
