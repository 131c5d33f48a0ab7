#include <memory>

#include "apps/krmodel/Batch.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/Loss.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Placement.h"

namespace krmodel {

namespace {

struct Options {
    QString input;
    QString output;
    std::optional<Encoding> encoding; ///< none when the person did not say
    ReadOptions reading;
    bool isQuiet = false;
    BatchOptions batch;
};

ExitCode Convert(const Options& options, const Output& output)
{
    LoadedModel loaded = LoadModel(options.input, options.reading);
    std::vector<Loss> losses = FindInputLosses(*loaded.format, options.input, loaded.model);
    if (output.format->contents == Contents::Facets && !PlaceInMillimetres(loaded.model))
        throw Failure(ExitCode::WriteFailed,
                      output.file.GetTarget() +
                          QStringLiteral(": not written, an object is placed further away than its numbers "
                                         "reach"));
    const std::vector<Loss> outputLosses =
        FindOutputLosses(loaded.model, *loaded.format, *output.format, output.encoding);
    losses.insert(losses.end(), outputLosses.begin(), outputLosses.end());
    SaveModel(output, loaded.model);
    if (!options.isQuiet)
        PrintLosses(options.input, losses);
    return ExitCode::Done;
}

ExitCode RunConvert(const Options& options)
{
    // A mistyped output is reported before a large input is read.
    const Output output = ChooseOutput(options.output, options.encoding);
    return RunTasks({{options.input, [&] { return Convert(options, output); }, {output.file}}},
                    options.batch);
}

} // namespace

void AddConvert(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    CLI::App* verb =
        AddVerb(app, "convert", "Write a model in the format of the output's suffix, replacing the output",
                command, [options] { return RunConvert(*options); });
    AddText(*verb, "IN", options->input, "model file to read")->required();
    AddText(*verb, "OUT", options->output, "model file to write")->required();
    AddEncoding(*verb, options->encoding);
    AddReading(*verb, options->reading);
    verb->add_flag("--quiet", options->isQuiet,
                   "do not tell what is not carried from the input to the output");
}

} // namespace krmodel
