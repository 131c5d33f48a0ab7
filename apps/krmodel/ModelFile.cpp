#include "apps/krmodel/ModelFile.h"

#include <new>

#include <QElapsedTimer>
#include <QFileInfo>

#include "apps/krmodel/Failure.h"
#include "apps/krmodel/InputFile.h"
#include "apps/krmodel/Stage.h"
#include "apps/krmodel/Verification.h"

namespace krmodel {

namespace {

[[noreturn]] void Fail(ExitCode code, const QString& fileName, const QString& reason)
{
    throw Failure(code, fileName + QStringLiteral(": ") + reason);
}

const Format& InputFormat(const QString& fileName)
{
    if (const Format* format = FindFormat(fileName))
        return *format;
    Fail(ExitCode::NotReadable, fileName,
         QStringLiteral("no format is known by this suffix; known are ") + KnownSuffixes());
}

/// What the library lets pass is a property of the file: a text without normals, counts that no memory
/// serves.
std::optional<Refusal> TryLoad(const Format& format, const QString& fileName, const ReadOptions& options,
                               Model& model)
{
    try {
        return format.load(fileName, options, model);
    } catch (const std::bad_alloc&) {
        Fail(ExitCode::Stopped, fileName, QStringLiteral("needs more memory than it may have"));
    } catch (const std::exception&) {
        Fail(ExitCode::NotReadable, fileName,
             QStringLiteral("not readable as %1, parts of it are missing").arg(QLatin1String(format.name)));
    }
}

bool HoldsFacets(const Model& model)
{
    for (const auto& mesh : model.meshes)
        if (mesh->GetFaceNum() > 0)
            return true;
    return false;
}

bool TrySave(const Output& output, const Model& model)
{
    try {
        return output.format->save(output.file.GetName(), model, output.encoding);
    } catch (const std::bad_alloc&) {
        Fail(ExitCode::WriteFailed, output.file.GetTarget(), QStringLiteral("not written, memory ran out"));
    } catch (const std::exception&) {
        Fail(ExitCode::WriteFailed, output.file.GetTarget(),
             QStringLiteral("not written, the writer stopped half-way"));
    }
}

/// Where the format has no names, an object is called as its file.
void NameObjects(Model& model, const QString& fileName)
{
    for (const auto& mesh : model.meshes)
        mesh->SetObjectName(QFileInfo(fileName).completeBaseName());
}

const Format& OutputFormat(const QString& fileName)
{
    const Format* format = FindFormat(fileName);
    if (format && format->save)
        return *format;
    const QString problem =
        format ? QStringLiteral("%1 is read, not written; formats to write are ")
                     .arg(QLatin1String(format->name))
               : QStringLiteral("cannot tell the format to write from this suffix; known are ");
    Fail(ExitCode::Usage, fileName, problem + WritableSuffixes());
}

} // namespace

LoadedModel LoadModel(const QString& fileName, const ReadOptions& options)
{
    RequireReadable(fileName);
    LoadedModel loaded;
    loaded.format = &InputFormat(fileName);
    QElapsedTimer clock;
    clock.start();
    std::optional<Refusal> refusal = TryLoad(*loaded.format, fileName, options, loaded.model);
    loaded.seconds = double(clock.nsecsElapsed()) * 1e-9;
    if (!refusal && !HoldsFacets(loaded.model))
        refusal = HoldsNoFacet();
    if (refusal)
        Fail(refusal->code, fileName, refusal->reason);
    EnterStage(Stage::Working);
    if (loaded.format->contents == Contents::Facets)
        NameObjects(loaded.model, fileName);
    return loaded;
}

Output ChooseOutput(const QString& fileName, std::optional<Encoding> encoding)
{
    const Format& format = OutputFormat(fileName);
    const bool hasBinary = format.variants != Variants::TextAlone;
    const bool hasText = format.variants != Variants::BinaryAlone;
    const auto refuse = [&](const char* variant) {
        Fail(ExitCode::Usage, fileName,
             QStringLiteral("%1 has no %2 variant").arg(QLatin1String(format.name), QLatin1String(variant)));
    };
    if (encoding == Encoding::Binary && !hasBinary)
        refuse("binary");
    if (encoding == Encoding::Text && !hasText)
        refuse("text");
    return {PendingFile(fileName), &format, encoding.value_or(hasBinary ? Encoding::Binary : Encoding::Text)};
}

void WriteModel(const Output& output, const Model& model)
{
    const PendingFile& file = output.file;
    EnterStage(Stage::Writing);
    if (!TrySave(output, model))
        Fail(ExitCode::WriteFailed, file.GetTarget(), QStringLiteral("cannot open for writing"));
    if (!output.format->isComplete(file.GetName(), model, output.encoding))
        Fail(ExitCode::WriteFailed, file.GetTarget(),
             QStringLiteral("not written, the file did not come out complete, the disk may be full"));
    EnterStage(Stage::Comparing);
    if (const auto difference = FindDifference(*output.format, file.GetName(), model, output.encoding))
        Fail(ExitCode::WriteFailed, file.GetTarget(),
             QStringLiteral("not written, the file did not come out right: ") + *difference);
}

void SaveModel(const Output& output, const Model& model)
{
    WriteModel(output, model);
    output.file.Commit();
}

} // namespace krmodel
