#include "apps/krmodel/OutputNames.h"

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

/// Names alike that lead to one place are one.
QString PlaceOf(const QString& fileName)
{
    const QFileInfo info(fileName);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : canonical;
}

/// As it was typed, up to the last slash.
QString FolderOf(const QString& fileName)
{
    return fileName.left(fileName.lastIndexOf(QLatin1Char('/')) + 1);
}

QString NameOutput(const QString& input, const QString& directory, const QString& suffix)
{
    const QString name = (IsStandard(input) ? QStringLiteral("stdin") : QFileInfo(input).completeBaseName()) +
                         QLatin1Char('.') + suffix;
    return directory.isEmpty() ? FolderOf(input) + name : QDir(directory).filePath(name);
}

} // namespace

bool IsStandard(const QString& name)
{
    return name == QStringLiteral("-");
}

bool AreOneFile(const QString& name, const QString& other)
{
    return PlaceOf(name) == PlaceOf(other);
}

QStringList NameOutputs(const QStringList& inputs, const QString& directory, const QString& suffix)
{
    QStringList outputs;
    QSet<QString> inputPlaces, outputPlaces;
    for (const QString& input : inputs)
        inputPlaces.insert(PlaceOf(input));
    for (const QString& input : inputs) {
        const QString output = NameOutput(input, directory, suffix);
        const QString place = PlaceOf(output);
        if (inputPlaces.contains(place))
            Refuse(output + QStringLiteral(": is an input, name another --directory for the outputs"));
        if (outputPlaces.contains(place))
            Refuse(output + QStringLiteral(": two inputs would be written to this file"));
        outputPlaces.insert(place);
        outputs << output;
    }
    return outputs;
}

QString NumberedName(const QString& fileName, size_t number)
{
    const QFileInfo info(fileName);
    return FolderOf(fileName) +
           QStringLiteral("%1-%2.%3").arg(info.completeBaseName(), QString::number(number), info.suffix());
}

} // namespace krmodel
