#include "apps/krmodel/Commands.h"
#include "apps/krmodel/ModelFile.h"

namespace krmodel {

ExitCode RunConvert(const Arguments& arguments)
{
    // A mistyped output is reported before a large input is read.
    const Output output = ChooseOutput(arguments.output, arguments.encoding);
    const LoadedModel loaded = LoadModel(arguments.inputs.first());
    SaveModel(output, loaded.model);
    return ExitCode::Done;
}

} // namespace krmodel
