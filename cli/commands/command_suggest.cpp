#include "commands/commands.h"

#include "batch/program_error.h"
#include "batch/run_photos.h"
#include "commands/suggest_crops.h"
#include "output/list_output.h"

namespace vistaTrim::cli {

int RunSuggest(const Options& options, const std::vector<ListedPhoto>& photos)
{
    try {
        ListOutput output(options);
        const std::vector<ListedPhoto> todo = output.StillToDo(photos);
        PhotoSteps steps;
        steps.Work = [&options, count = todo.size()](const ListedPhoto& photo,
                                                     PhotoResult& result) {
            SuggestCrops(AnalyseFor(options.Request, OpenPhoto(options, photo),
                                    RegionsFor(options, photo, count)),
                         options, result);
        };
        steps.Emit = [&output](const PhotoResult& result) { output.Write(result); };
        return RunPhotos(options, todo, steps);
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::cli
