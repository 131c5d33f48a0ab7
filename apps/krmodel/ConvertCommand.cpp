#include "apps/krmodel/Batch.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Placement.h"

namespace krmodel {

namespace {

ExitCode Convert(const QString& input, const Output& output)
{
    LoadedModel loaded = LoadModel(input);
    if (output.format->contents == Contents::Facets && !PlaceInMillimetres(loaded.model))
        throw Failure(ExitCode::WriteFailed,
                      output.file.GetTarget() +
                          QStringLiteral(": not written, an object is placed further away than its numbers "
                                         "reach"));
    SaveModel(output, loaded.model);
    return ExitCode::Done;
}

} // namespace

ExitCode RunConvert(const Arguments& arguments)
{
    // A mistyped output is reported before a large input is read.
    const Output output = ChooseOutput(arguments.output, arguments.encoding);
    const QString& input = arguments.inputs.first();
    return RunTasks({{input, [=] { return Convert(input, output); }, {output.file}}}, arguments);
}

} // namespace krmodel
