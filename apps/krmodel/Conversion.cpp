#include "apps/krmodel/Conversion.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include "apps/krmodel/Failure.h"

namespace krmodel {

namespace {

[[noreturn]] void Refuse(const QString& reason)
{
    throw Failure(ExitCode::Usage, reason);
}

bool IsStandard(const QString& name)
{
    return name == QStringLiteral("-");
}

QString TemporaryName(const QString& name, const QString& suffix)
{
    return QDir::temp().filePath(name + QLatin1Char('.') + suffix);
}

/// Names alike that lead to one place are one.
QString PlaceOf(const QString& fileName)
{
    const QFileInfo info(fileName);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : canonical;
}

void TakeStandardInput(Conversion& conversion, const ConvertOptions& options)
{
    if (options.from.isEmpty())
        Refuse(QStringLiteral("standard input has no suffix, name its format with --from"));
    conversion.isFromStandardInput = true;
    conversion.shownInput = QStringLiteral("standard input");
    // A name that nobody else has.
    conversion.inputFile = PendingFile(TemporaryName(QStringLiteral("stdin"), options.from)).GetName();
}

Output OutputOf(const ConvertOptions& options, const QString& name)
{
    if (!IsStandard(name))
        return ChooseOutput(name, options.encoding);
    if (options.to.isEmpty())
        Refuse(QStringLiteral("standard output has no suffix, name the format to write with --to"));
    if (options.joining == Joining::Split)
        Refuse(QStringLiteral("--split writes several files, standard output is one"));
    Output output = ChooseOutput(TemporaryName(QStringLiteral("stdout"), options.to), options.encoding);
    output.file = output.file.WithTarget(QStringLiteral("standard output"));
    return output;
}

Conversion PairOf(const ConvertOptions& options, const QString& input, const QString& output)
{
    Conversion conversion{input, input, false, IsStandard(output), OutputOf(options, output)};
    if (IsStandard(input))
        TakeStandardInput(conversion, options);
    return conversion;
}

/// As it was typed, up to the last slash.
QString FolderOf(const QString& fileName)
{
    return fileName.left(fileName.lastIndexOf(QLatin1Char('/')) + 1);
}

QString OutputNameOf(const ConvertOptions& options, const QString& input)
{
    const QString name = (IsStandard(input) ? QStringLiteral("stdin") : QFileInfo(input).completeBaseName()) +
                         QLatin1Char('.') + options.to;
    return options.directory.isEmpty() ? FolderOf(input) + name : QDir(options.directory).filePath(name);
}

std::vector<Conversion> PlanMany(const ConvertOptions& options)
{
    std::vector<Conversion> conversions;
    QSet<QString> inputs, outputs;
    for (const QString& input : options.files)
        inputs.insert(PlaceOf(input));
    for (const QString& input : options.files) {
        const QString output = OutputNameOf(options, input);
        const QString place = PlaceOf(output);
        if (inputs.contains(place))
            Refuse(output + QStringLiteral(": is an input, name another --directory for the outputs"));
        if (outputs.contains(place))
            Refuse(output + QStringLiteral(": two inputs would be written to this file"));
        outputs.insert(place);
        conversions.push_back(PairOf(options, input, output));
    }
    return conversions;
}

std::vector<Conversion> Plan(const ConvertOptions& options)
{
    const bool isPair = options.files.size() == 2;
    if (isPair && (options.to.isEmpty() || IsStandard(options.files[1])))
        return {PairOf(options, options.files[0], options.files[1])};
    if (options.to.isEmpty())
        Refuse(QStringLiteral("name one input and one output, or any number of inputs and --to FORMAT"));
    return PlanMany(options);
}

} // namespace

std::vector<Conversion> PlanConversions(const ConvertOptions& options)
{
    if (options.to.isEmpty() && !options.directory.isEmpty())
        Refuse(QStringLiteral("--directory goes with --to, which names the format to write there"));
    std::vector<Conversion> conversions = Plan(options);
    int fromStandardInput = 0;
    for (const Conversion& conversion : conversions) {
        fromStandardInput += conversion.isFromStandardInput ? 1 : 0;
        if (options.hasNormals && !conversion.output.format->holdsNormals)
            Refuse(
                QStringLiteral("--normals: %1 has none").arg(QLatin1String(conversion.output.format->name)));
    }
    if (fromStandardInput > 1)
        Refuse(QStringLiteral("standard input can be read but once"));
    if (fromStandardInput == 0 && !options.from.isEmpty())
        Refuse(QStringLiteral("--from goes with \"-\", standard input; files are known by their suffixes"));
    return conversions;
}

QString NumberedName(const QString& fileName, size_t number)
{
    const QFileInfo info(fileName);
    return FolderOf(fileName) +
           QStringLiteral("%1-%2.%3").arg(info.completeBaseName(), QString::number(number), info.suffix());
}

} // namespace krmodel
