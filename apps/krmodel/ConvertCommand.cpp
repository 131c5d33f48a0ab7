#include <cstdio>
#include <memory>

#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>

#include "apps/krmodel/BatchCommandLine.h"
#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Conversion.h"
#include "apps/krmodel/Failure.h"
#include "apps/krmodel/Json.h"
#include "apps/krmodel/Loss.h"
#include "apps/krmodel/OutputNames.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/Texts.h"
#include "fileformat/3mf/Model3MF.h"

namespace krmodel {

namespace {

constexpr const char* kUnits[] = {"micron", "millimeter", "centimeter", "inch", "foot", "meter"};

struct Options : ConvertOptions {
    BatchOptions batch;
};

/// @param most  the bytes that it may have, 0 for any number
void KeepStandardInput(const QString& fileName, qint64 most)
{
    constexpr qint64 kBlockSize = 1 << 20;
    QFile from, to(fileName);
    if (!from.open(STDIN_FILENO, QIODevice::ReadOnly))
        throw Failure(ExitCode::CannotOpen, QStringLiteral("standard input: cannot open"));
    bool isGood = to.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    for (QByteArray block = from.read(kBlockSize); isGood && !block.isEmpty();
         block = from.read(kBlockSize)) {
        isGood = to.write(block) == block.size();
        if (most > 0 && to.size() > most)
            throw Failure(ExitCode::Stopped,
                          QStringLiteral("standard input: not read further, it has more than %1 bytes")
                              .arg(CountText(most)));
    }
    if (!isGood)
        throw Failure(ExitCode::WriteFailed,
                      QStringLiteral("standard input: cannot be kept in a temporary file: ") +
                          to.errorString());
}

LoadedModel LoadStandardInput(const QString& fileName, const Options& options)
{
    KeepStandardInput(fileName, options.batch.inputBytes);
    try {
        LoadedModel loaded = LoadModel(fileName, options.reading);
        if (loaded.format->contents == Contents::Facets)
            loaded.model.meshes.at(0)->SetObjectName(QStringLiteral("stdin"));
        return loaded;
    } catch (const Failure& failure) {
        // The temporary name says nothing to anybody.
        throw Failure(failure.GetCode(),
                      QString::fromUtf8(failure.what()).replace(fileName, QStringLiteral("standard input")));
    }
}

LoadedModel Load(const Conversion& conversion, const Options& options)
{
    return conversion.isFromStandardInput ? LoadStandardInput(conversion.inputFile, options)
                                          : LoadModel(conversion.inputFile, options.reading);
}

bool HasUnit(const Format& format)
{
    return format.contents == Contents::Objects;
}

/// The unit said is that of the side that has none; between two packages that of the output.
Unit UnitToWrite(const Unit& said, const LoadedModel& loaded, const Format& output)
{
    const bool isOfInput = !HasUnit(*loaded.format);
    if (!said.name.isEmpty() && !isOfInput)
        return said;
    return HasUnit(output) ? loaded.model.unit : Unit{QStringLiteral("millimeter"), 1};
}

Placing PlacingFor(const Options& options, const Format& output)
{
    const bool mustBeInPlace = !HasUnit(output) || options.joining == Joining::Merge;
    if (options.appliesPlacements.value_or(mustBeInPlace))
        return Placing::Apply;
    return mustBeInPlace ? Placing::Drop : Placing::Keep;
}

/// Units, placements and the number of objects as the person wants them.
void Arrange(LoadedModel& loaded, const Options& options, const Format& output)
{
    const Unit said{options.unit, Model3MF::GetUnitScale(options.unit)};
    if (!said.name.isEmpty() && !HasUnit(*loaded.format))
        loaded.model.unit = said;
    if (!Place(loaded.model, PlacingFor(options, output), UnitToWrite(said, loaded, output)))
        throw Failure(ExitCode::WriteFailed,
                      QStringLiteral("an object is placed further away than its numbers reach"));
    if (options.joining == Joining::Merge && !MergeObjects(loaded.model))
        throw Failure(ExitCode::WriteFailed, QStringLiteral("all objects together are too large for one"));
    loaded.model.wantsNormals = options.hasNormals;
}

/// Each object as a model of its own.
void SaveApart(const Output& output, Model& model)
{
    std::vector<std::unique_ptr<Mesh>> meshes = std::move(model.meshes);
    for (size_t i = 0; i < meshes.size(); ++i) {
        model.meshes.clear();
        model.meshes.push_back(std::move(meshes[i]));
        Output one = output;
        one.file = output.file.WithTarget(NumberedName(output.file.GetTarget(), i + 1));
        if (model.meshes[0]->GetFaceNum() > 0)
            SaveModel(one, model);
        model.groups.clear();
    }
}

void Save(const Conversion& conversion, const Options& options, int standardOutput, Model& model)
{
    if (options.joining == Joining::Split) {
        SaveApart(conversion.output, model);
    } else if (conversion.isToStandardOutput) {
        WriteModel(conversion.output, model);
        conversion.output.file.CopyTo(standardOutput);
    } else {
        SaveModel(conversion.output, model);
    }
}

qint64 FacetCount(const Model& model)
{
    qint64 count = 0;
    for (const auto& mesh : model.meshes)
        count += mesh->GetFaceNum();
    return count;
}

void PrintSummary(const Conversion& conversion, qint64 facetCount, double seconds)
{
    const QString target = conversion.isToStandardOutput ? QStringLiteral("standard output")
                                                         : conversion.output.file.GetTarget();
    std::fprintf(stderr, "krmodel: %s: %s facets written to %s, read back and compared, in %.2f s\n",
                 qUtf8Printable(conversion.shownInput), qUtf8Printable(CountText(facetCount)),
                 qUtf8Printable(target), seconds);
}

/// The files that Save() writes.
QStringList OutputNames(const Conversion& conversion, const Options& options, const Model& model)
{
    const QString target = conversion.output.file.GetTarget();
    if (options.joining != Joining::Split)
        return {target};
    QStringList names;
    for (size_t i = 0; i < model.meshes.size(); ++i)
        if (model.meshes[i]->GetFaceNum() > 0)
            names << NumberedName(target, i + 1);
    return names;
}

void PrintJson(const Conversion& conversion, const QJsonObject& description, const QStringList& outputs,
               const std::vector<Loss>& losses)
{
    QJsonObject more;
    more.insert(QStringLiteral("outputs"), QJsonArray::fromStringList(outputs));
    more.insert(QStringLiteral("outputFormat"), QLatin1String(conversion.output.format->name));
    more.insert(QStringLiteral("losses"), DescribeLosses(losses));
    const QByteArray line = JsonLine(conversion.shownInput, Merged(description, more));
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
}

ExitCode Convert(const Conversion& conversion, const Options& options, int standardOutput)
{
    QElapsedTimer clock;
    clock.start();
    const Output& output = conversion.output;
    LoadedModel loaded = Load(conversion, options);
    const bool wantsJson = options.batch.form == Form::Json;
    std::vector<Loss> losses = loaded.format->scan(conversion.inputFile, loaded.model);
    const QJsonObject description = wantsJson ? DescribeModel(loaded, conversion.inputFile) : QJsonObject();
    try {
        Arrange(loaded, options, *output.format);
    } catch (const Failure& failure) {
        throw Failure(failure.GetCode(), output.file.GetTarget() + QStringLiteral(": not written, ") +
                                             QString::fromUtf8(failure.what()));
    }
    const std::vector<Loss> outputLosses =
        FindOutputLosses(loaded.model, *loaded.format, *output.format, output.encoding);
    losses.insert(losses.end(), outputLosses.begin(), outputLosses.end());
    const qint64 facetCount = FacetCount(loaded.model);
    const QStringList outputs = OutputNames(conversion, options, loaded.model);
    Save(conversion, options, standardOutput, loaded.model);
    if (!options.batch.isQuiet)
        PrintLosses(conversion.shownInput, losses);
    if (wantsJson)
        PrintJson(conversion, description, outputs, losses);
    if (options.isVerbose)
        PrintSummary(conversion, facetCount, double(clock.elapsed()) * 1e-3);
    return ExitCode::Done;
}

/// What is to be gone when the conversion ends, if it is still there.
std::vector<PendingFile> FilesOf(const Conversion& conversion)
{
    const PendingFile& output = conversion.output.file;
    if (!conversion.isFromStandardInput)
        return {output};
    return {output, output.WithName(conversion.inputFile)};
}

ExitCode RunConvert(const Options& options)
{
    // A mistyped output is reported before a large input is read.
    const std::vector<Conversion> conversions = PlanConversions(options);
    for (const Conversion& conversion : conversions)
        if (conversion.isToStandardOutput && options.batch.form == Form::Json)
            throw Failure(ExitCode::Usage,
                          QStringLiteral("--json prints on standard output, where a model is to go"));
    // The processes that do the work have another one.
    const int standardOutput = dup(STDOUT_FILENO);
    std::vector<Task> tasks;
    for (const Conversion& conversion : conversions)
        tasks.push_back(
            {conversion.shownInput,
             [&conversion, &options, standardOutput] { return Convert(conversion, options, standardOutput); },
             FilesOf(conversion)});
    return RunTasks(tasks, options.batch);
}

std::string CheckSuffix(const std::string& suffix)
{
    const QString name = QStringLiteral("model.") + QString::fromStdString(suffix);
    if (FindFormat(name))
        return {};
    return "'" + suffix + "' is no format; known are " + KnownSuffixes().toStdString();
}

void AddFiles(CLI::App& verb, Options& options)
{
    AddFileNames(
        verb, options.files,
        "IN OUT: the model file to read and the one to write; or with --to any number of model files to "
        "read. \"-\" is standard input or output");
    AddText(verb, "--to", options.to,
            "write each input in this format, to a file of its name with this suffix; or the format of \"-\" "
            "as the second of two names")
        .Value("SUFFIX")
        .Check(CheckSuffix);
    AddText(verb, "--directory", options.directory,
            "where the files of --to go; without it each lies beside its input")
        .Value("DIRECTORY");
    AddText(verb, "--from", options.from, "the format of standard input, which has no suffix")
        .Value("SUFFIX")
        .Check(CheckSuffix);
}

void AddArrangement(CLI::App& verb, Options& options)
{
    AddText(
        verb, "--unit", options.unit,
        "the unit of a file whose format has none: of the input's numbers, which become millimetres or a "
        "3MF file in this unit; for a 3MF input the unit to write. Without it numbers are millimetres, and "
        "3MF keeps its unit")
        .Value("UNIT")
        .OneOf({std::begin(kUnits), std::end(kUnits)});
    const Option apply = AddFlag(
        verb, "--apply-transform", [&options] { options.appliesPlacements = true; },
        "carry objects to their places in their coordinates (default for STL, OBJ and --merge)");
    AddFlag(
        verb, "--no-apply-transform", [&options] { options.appliesPlacements = false; },
        "leave coordinates as they are; 3MF keeps the placements (its default), STL and OBJ lose them")
        .Excludes(apply);
    const Option merge = AddFlag(
        verb, "--merge", [&options] { options.joining = Joining::Merge; },
        "make one object of all; without it 3MF keeps them apart");
    AddFlag(
        verb, "--split", [&options] { options.joining = Joining::Split; },
        "write a file for each object: part-1.stl, part-2.stl, ... for part.stl")
        .Excludes(merge);
}

} // namespace

void AddConvert(CLI::App& app, Command& command)
{
    const auto options = std::make_shared<Options>();
    CLI::App& verb = AddVerb(
        app, "convert", "Write models in the format of the output's suffix, or of --to, replacing the output",
        command, [options] { return RunConvert(*options); });
    AddFiles(verb, *options);
    AddEncoding(verb, options->encoding);
    AddReading(verb, options->reading);
    AddArrangement(verb, *options);
    AddFlag(verb, "--normals", options->hasNormals,
            "write a normal for each facet; STL always has them, OBJ only so, 3MF never");
    const Option quiet =
        AddQuiet(verb, options->batch,
                 "show no progress, and do not tell what is not carried from the input to the output");
    AddFlag(verb, "--verbose", options->isVerbose, "tell of each file that was written").Excludes(quiet);
    AddJson(verb, options->batch);
    AddJobs(verb, options->batch);
    AddLimits(verb, options->batch);
}

} // namespace krmodel
