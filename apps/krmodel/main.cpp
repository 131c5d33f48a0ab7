#include <cstdio>
#include <new>

#include <QTextCodec>

#include "apps/krmodel/Commands.h"
#include "apps/krmodel/Failure.h"

namespace krmodel {

void PrintError(const char* message)
{
    std::fprintf(stderr, "krmodel: %s\n", message);
}

namespace {

ExitCode Run(int argc, const char* const* argv)
{
    Arguments arguments;
    if (const auto end = ParseArguments(argc, argv, arguments))
        return *end;
    try {
        return arguments.command(arguments);
    } catch (const Failure& failure) {
        PrintError(failure.what());
        return failure.GetCode();
    } catch (const std::bad_alloc&) {
        PrintError("out of memory");
        return ExitCode::NotReadable;
    }
}

} // namespace

} // namespace krmodel

int main(int argc, char** argv)
{
    // File names are UTF-8 on the systems that we run on, also where no locale is set up.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return int(krmodel::Run(argc, argv));
}
