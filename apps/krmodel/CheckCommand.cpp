#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Json.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/ReportCommand.h"
#include "apps/krmodel/Verdict.h"

namespace krmodel {

namespace {

QByteArray Text(const QString& fileName, const Verdict& verdict)
{
    const QString word =
        verdict.IsPrintable() ? QStringLiteral("printable") : QStringLiteral("not printable");
    return (fileName + QStringLiteral(": ") + word + QLatin1Char('\n') + VerdictText(verdict)).toUtf8();
}

QByteArray Check(const QString& fileName, LoadedModel& loaded, Form form)
{
    const QJsonObject description = form == Form::Json ? DescribeModel(loaded, fileName) : QJsonObject();
    // A vertex that is placed too far away is not finite then, and told as such.
    static_cast<void>(PlaceInMillimetres(loaded.model));
    const MeshReport report = Measure(loaded.model);
    const Verdict verdict = Judge(loaded.model, report);
    if (form != Form::Json)
        return Text(fileName, verdict);
    return JsonLine(fileName, Merged(Merged(description, DescribeSurface(report)), DescribeVerdict(verdict)));
}

} // namespace

void AddCheck(CLI::App& app, Command& command)
{
    CLI::App& verb = AddReport(app, "check", "Tell whether models can be printed, and if not, why and where",
                               Form::Lines, Check, command);
    AddToHelp(verb, DescribeVerdicts());
}

} // namespace krmodel
