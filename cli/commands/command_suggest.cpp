#include "commands/commands.h"

#include "batch/run_photos.h"
#include "commands/suggest_crops.h"
#include "options/program_error.h"
#include "output/list_output.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

int RunSuggest(const Options& options, const std::vector<ListedPhoto>& photos)
{
    try {
        ListOutput output(options);
        const std::vector<ListedPhoto> todo = output.StillToDo(photos);
        if (options.Resume && todo.empty() && !options.Quiet)
            Complain("nothing left to do: " + Shown(options.Output) + " holds all the photographs");
        PhotoSteps steps;
        steps.Work = [&options, count = todo.size()](const ListedPhoto& photo,
                                                     PhotoResult& result) {
            const photo::Analysis analysis = AnalyseFor(options.Request, OpenPhoto(options, photo),
                                                        RegionsFor(options, photo, count));
            SuggestCrops(analysis, options, result);
            const bool isForPeople = options.Format == ListFormat::Text;
            if (isForPeople && result.Found.Crops.empty() && !options.Request.Explain)
                result.WhyNone = WhyNoCrop(analysis, options);
        };
        steps.Emit = [&output](const PhotoResult& result) { output.Write(result); };
        return RunPhotos(options, todo, steps);
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::cli
