#include "apps/krmodel/Guard.h"

#include <cstdio>
#include <new>

#include "apps/krmodel/Failure.h"

namespace krmodel {

ExitCode Guard(const std::function<ExitCode()>& work)
{
    return Guard(work, PrintError);
}

ExitCode Guard(const std::function<ExitCode()>& work, const std::function<void(const QString&)>& report)
{
    const auto end = [&](ExitCode code, const char* sentence) {
        report(QString::fromUtf8(sentence));
        return code;
    };
    try {
        return work();
    } catch (const Failure& failure) {
        return end(failure.GetCode(), failure.what());
    } catch (const std::bad_alloc&) {
        return end(ExitCode::Stopped, "needs more memory than it may have");
    } catch (const std::exception& exception) {
        const std::string sentence = std::string("stopped by an unexpected error: ") + exception.what();
        return end(ExitCode::Stopped, sentence.c_str());
    } catch (...) {
        // What the CAD library throws is no standard exception.
        return end(ExitCode::Stopped, "stopped by an unexpected error");
    }
}

void PrintError(const QString& sentence)
{
    std::fprintf(stderr, "krmodel: %s\n", qUtf8Printable(sentence));
}

} // namespace krmodel
