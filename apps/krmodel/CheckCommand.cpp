#include <cstdio>
#include <memory>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Json.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/Verdict.h"

namespace krmodel {

namespace {

struct Options {
    QStringList inputs;
    ReadOptions reading;
    BatchOptions batch;
};

QByteArray Text(const QString& fileName, const Verdict& verdict)
{
    const QString word =
        verdict.IsPrintable() ? QStringLiteral("printable") : QStringLiteral("not printable");
    return (fileName + QStringLiteral(": ") + word + QLatin1Char('\n') + VerdictText(verdict)).toUtf8();
}

ExitCode Check(const QString& fileName, const Options& options)
{
    const Form form = options.batch.form;
    LoadedModel loaded = LoadModel(fileName, options.reading);
    const QJsonObject description = form == Form::Json ? DescribeModel(loaded, fileName) : QJsonObject();
    // A vertex that is placed too far away is not finite then, and told as such.
    static_cast<void>(PlaceInMillimetres(loaded.model));
    const MeshReport report = Measure(loaded.model);
    const Verdict verdict = Judge(loaded.model, report);
    const QByteArray result = form == Form::Json
                                  ? JsonLine(fileName, Merged(Merged(description, DescribeSurface(report)),
                                                              DescribeVerdict(verdict)))
                                  : Text(fileName, verdict);
    std::fwrite(result.constData(), 1, size_t(result.size()), stdout);
    return ExitCode::Done;
}

ExitCode RunCheck(const Options& options)
{
    std::vector<Task> tasks;
    for (const QString& fileName : options.inputs)
        tasks.push_back({fileName, [&] { return Check(fileName, options); }, {}});
    return RunTasks(tasks, options.batch);
}

} // namespace

void AddCheck(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    options->batch.form = Form::Lines;
    CLI::App* verb = AddVerb(app, "check", "Tell whether models can be printed, and if not, why and where",
                             command, [options] { return RunCheck(*options); });
    verb->footer(DescribeVerdicts().toStdString() + "\n\n" + verb->get_footer());
    AddInputs(*verb, options->inputs);
    AddReading(*verb, options->reading);
    AddJson(*verb, options->batch);
    AddJobs(*verb, options->batch);
    AddLimits(*verb, options->batch);
}

} // namespace krmodel
