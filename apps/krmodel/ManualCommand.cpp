#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>

#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Manual.h"

namespace krmodel {

namespace {

struct Kind {
    const char* name;
    QString (*make)(const CLI::App& app);
};
constexpr Kind kKinds[] = {
    {"man", ManualPage}, {"bash", BashCompletion}, {"zsh", ZshCompletion}, {"fish", FishCompletion}};

QString Make(const CLI::App& app, const QString& name)
{
    // It is one of them, or the command line would have been refused.
    const Kind* const kind = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& known) {
        return name == QLatin1String(known.name);
    });
    return kind->make(app);
}

std::vector<std::string> KindNames()
{
    std::vector<std::string> names;
    for (const Kind& kind : kKinds)
        names.emplace_back(kind.name);
    return names;
}

ExitCode Print(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    return ExitCode::Done;
}

} // namespace

void AddFormats(CLI::App& app, Command& command)
{
    AddVerb(app, "formats", "Print which model formats are read and written", command,
            [] { return Print(DescribeFormats()); });
}

void AddManual(CLI::App& app, Command& command)
{
    const auto kind = std::make_shared<QString>();
    const auto choose = [&app, &command, kind] {
        command = [text = Make(app, *kind)] { return Print(text); };
    };
    CLI::App& verb =
        AddVerb(app, "manual", "Print the manual page, or what a shell needs for completion", choose);
    AddText(verb, "KIND", *kind, "man, bash, zsh or fish").Required().OneOf(KindNames());
}

} // namespace krmodel
