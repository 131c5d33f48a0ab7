#include "apps/krmodel/Conversion.h"

#include <QDir>

#include "apps/krmodel/Failure.h"
#include "apps/krmodel/OutputNames.h"

namespace krmodel {

namespace {

[[noreturn]] void Refuse(const QString& reason)
{
    throw Failure(ExitCode::Usage, reason);
}

QString TemporaryName(const QString& name, const QString& suffix)
{
    return QDir::temp().filePath(name + QLatin1Char('.') + suffix);
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

std::vector<Conversion> PlanMany(const ConvertOptions& options)
{
    std::vector<Conversion> conversions;
    const QStringList outputs = NameOutputs(options.files, options.directory, options.to);
    for (int i = 0; i < outputs.size(); ++i)
        conversions.push_back(PairOf(options, options.files[i], outputs[i]));
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
    bool isStandardInputRead = false; // once: its output would be written twice
    for (const Conversion& conversion : conversions) {
        isStandardInputRead = isStandardInputRead || conversion.isFromStandardInput;
        if (options.hasNormals && !conversion.output.format->holdsNormals)
            Refuse(
                QStringLiteral("--normals: %1 has none").arg(QLatin1String(conversion.output.format->name)));
    }
    if (!isStandardInputRead && !options.from.isEmpty())
        Refuse(QStringLiteral("--from goes with \"-\", standard input; files are known by their suffixes"));
    return conversions;
}

} // namespace krmodel
