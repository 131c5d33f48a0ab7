#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Placement.h"

namespace krmodel {

ExitCode RunConvert(const Arguments& arguments)
{
    // A mistyped output is reported before a large input is read.
    const Output output = ChooseOutput(arguments.output, arguments.encoding);
    LoadedModel loaded = LoadModel(arguments.inputs.first());
    if (output.format->contents == Contents::Facets && !PlaceInMillimetres(loaded.model))
        throw Failure(ExitCode::WriteFailed,
                      output.fileName + QStringLiteral(": not written, an object is placed further away "
                                                       "than its numbers reach"));
    SaveModel(output, loaded.model);
    return ExitCode::Done;
}

} // namespace krmodel
