#include "apps/krmodel/Guard.h"

#include <cstdio>
#include <new>

#include "apps/krmodel/Failure.h"

namespace krmodel {

namespace {

ExitCode Report(ExitCode code, const char* message)
{
    std::fprintf(stderr, "krmodel: %s\n", message);
    return code;
}

} // namespace

ExitCode Guard(const std::function<ExitCode()>& work)
{
    try {
        return work();
    } catch (const Failure& failure) {
        return Report(failure.GetCode(), failure.what());
    } catch (const std::bad_alloc&) {
        return Report(ExitCode::Stopped, "needs more memory than it may have");
    } catch (const std::exception& exception) {
        const std::string message = std::string("stopped by an unexpected error: ") + exception.what();
        return Report(ExitCode::Stopped, message.c_str());
    } catch (...) {
        // What the CAD library throws is no standard exception.
        return Report(ExitCode::Stopped, "stopped by an unexpected error");
    }
}

} // namespace krmodel
