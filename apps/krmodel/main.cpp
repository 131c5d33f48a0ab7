#include <cstdio>

#include <QTextCodec>

#include "apps/krmodel/Arguments.h"
#include "apps/krmodel/Guard.h"

namespace krmodel {

namespace {

ExitCode Run(int argc, const char* const* argv)
{
    Command command;
    if (const auto end = ParseArguments(argc, argv, command))
        return *end;
    return command();
}

/// What was printed counts when it has arrived.
ExitCode AfterPrinting(ExitCode code)
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return code;
    PrintError(QStringLiteral("standard output: cannot write in full"));
    return code == ExitCode::Done ? ExitCode::WriteFailed : code;
}

} // namespace

} // namespace krmodel

int main(int argc, char** argv)
{
    // File names are UTF-8 on the systems that we run on, also where no locale is set up.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // What goes wrong the program says itself; Qt would say some of it a second time. After a fatal message,
    // though, there is no program any more.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg)
            krmodel::PrintError(text);
    });
    return int(krmodel::AfterPrinting(krmodel::Guard([=] { return krmodel::Run(argc, argv); })));
}
