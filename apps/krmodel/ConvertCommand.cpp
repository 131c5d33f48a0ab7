#include "apps/krmodel/Commands.h"
#include "apps/krmodel/ModelFile.h"

namespace krmodel {

ExitCode RunConvert(const Arguments& arguments)
{
    // A mistyped output is reported before a large input is read.
    OutputFormat(arguments.output);
    const LoadedModel loaded = LoadModel(arguments.inputs.first());
    SaveModel(arguments.output, loaded.model, arguments.encoding);
    return ExitCode::Done;
}

} // namespace krmodel
