#include "apps/krmodel/ReportCommand.h"

#include <cstdio>
#include <memory>

#include <QStringList>

namespace krmodel {

namespace {

struct Options {
    QStringList inputs;
    ReadOptions reading;
    BatchOptions batch;
};

void AddInputs(CLI::App& verb, QStringList& inputs)
{
    const auto take = [&inputs](const std::vector<std::string>& fileNames) {
        for (const std::string& fileName : fileNames)
            inputs << QString::fromStdString(fileName);
    };
    verb.add_option_function<std::vector<std::string>>("FILE", take, "model files to read")->required();
}

ExitCode Print(const QString& fileName, const Options& options, Report report)
{
    LoadedModel loaded = LoadModel(fileName, options.reading);
    const QByteArray text = report(fileName, loaded, options.batch.form);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    return ExitCode::Done;
}

ExitCode Run(const Options& options, Report report)
{
    std::vector<Task> tasks;
    for (const QString& fileName : options.inputs)
        tasks.push_back({fileName, [&, report] { return Print(fileName, options, report); }, {}});
    return RunTasks(tasks, options.batch);
}

} // namespace

CLI::App* AddReport(CLI::App& app, const char* name, const char* help, Form usualForm, Report report,
                    Command& command)
{
    const auto options = std::make_shared<Options>();
    options->batch.form = usualForm;
    CLI::App* verb = AddVerb(app, name, help, command, [options, report] { return Run(*options, report); });
    AddInputs(*verb, options->inputs);
    AddReading(*verb, options->reading);
    AddJson(*verb, options->batch);
    AddJobs(*verb, options->batch);
    AddQuiet(*verb, options->batch);
    AddLimits(*verb, options->batch);
    return verb;
}

} // namespace krmodel
