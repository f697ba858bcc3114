#include "decode/jt9process.h"

#include <qt_windows.h>

namespace outpost
{

namespace
{
struct CloseJob {
    void operator()(void *job) const { CloseHandle(job); }
};

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED // the only way to the handle of the child's first thread
// The handles of the running child; null if there is none.
const PROCESS_INFORMATION *handlesOf(const QProcess &process)
{
    return process.pid();
}
QT_WARNING_POP
} // namespace

struct Jt9Process::Family {
    std::unique_ptr<void, CloseJob> job;
};

const bool Jt9Process::crashIsSignal = false;

Jt9Process::Jt9Process(bool) : family(std::make_unique<Family>())
{
    family->job.reset(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (family->job) {
        SetInformationJobObject(family->job.get(), JobObjectExtendedLimitInformation, &limits,
                                sizeof(limits));
    }
    setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments *process) {
        process->flags |= CREATE_NO_WINDOW | CREATE_SUSPENDED;
    });
}

Jt9Process::~Jt9Process()
{
    killFamily();
}

// The child is resumed only after it belongs to the job, so that everything it starts belongs to
// it, too.
bool Jt9Process::launch(const QString &program, const QStringList &arguments, int startMs)
{
    start(program, arguments);
    const PROCESS_INFORMATION *child = handlesOf(*this);
    if (child != nullptr) {
        if (family->job) {
            AssignProcessToJobObject(family->job.get(), child->hProcess);
        }
        ResumeThread(child->hThread);
    }
    return waitForStarted(startMs);
}

void Jt9Process::killFamily()
{
    kill();
    if (family->job) {
        TerminateJobObject(family->job.get(), 1);
    }
}

void Jt9Process::setupChildProcess() {}

} // namespace outpost
