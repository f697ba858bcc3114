#include "decode/jt9process.h"

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <QDir>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>
#endif

namespace outpost
{

Jt9Process::~Jt9Process()
{
    killFamily();
}

#ifdef Q_OS_WIN

Jt9Process::Jt9Process(bool) : job(CreateJobObjectW(nullptr, nullptr))
{
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job) {
        SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                sizeof(limits));
    }
    setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments *process) {
        process->flags |= CREATE_NO_WINDOW | CREATE_SUSPENDED;
    });
}

void Jt9Process::CloseJob::operator()(void *handle) const
{
    CloseHandle(handle);
}

// It runs only once it belongs to the job, so that nothing that it starts can stay outside.
bool Jt9Process::launch(const QString &program, const QStringList &arguments, int startMs)
{
    start(program, arguments);
    const PROCESS_INFORMATION *child = handles();
    if (child != nullptr) {
        if (job) {
            AssignProcessToJobObject(job.get(), child->hProcess);
        }
        ResumeThread(child->hThread);
    }
    return waitForStarted(startMs);
}

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED // nothing else tells the handle of the child's first thread
    const _PROCESS_INFORMATION *
    Jt9Process::handles() const
{
    return pid();
}
QT_WARNING_POP

void Jt9Process::killFamily()
{
    kill();
    if (job) {
        TerminateJobObject(job.get(), 1);
    }
}

#else

Jt9Process::Jt9Process(bool isOwn) : folderIsOwn(isOwn) {}

Jt9Process::Lifeline::Lifeline()
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) == 0) {
        readingEnd = ends[0];
        writingEnd = ends[1];
    }
}

Jt9Process::Lifeline::~Lifeline()
{
    closeWritingEnd();
    if (readingEnd >= 0) {
        ::close(readingEnd);
    }
}

void Jt9Process::Lifeline::closeWritingEnd()
{
    if (writingEnd >= 0) {
        ::close(std::exchange(writingEnd, -1));
    }
}

void Jt9Process::setupChildProcess()
{
    ::setpgid(0, 0); // the child leads a group of its own, whose id is the child's
    ::fcntl(lifeline.writingEnd, F_SETFD, 0); // the decoder keeps it, and hands it on
}

bool Jt9Process::launch(const QString &program, const QStringList &arguments, int startMs)
{
    start(program, arguments);
    lifeline.closeWritingEnd();
    groupId = processId();
    return waitForStarted(startMs);
}

// The decoder and all that it has started are gone, or have closed whatever they were given.
bool Jt9Process::hasEnded() const
{
    pollfd end = {lifeline.readingEnd, POLLIN, 0};
    return lifeline.readingEnd >= 0 && ::poll(&end, 1, 0) == 1 && (end.revents & POLLHUP) != 0;
}

void Jt9Process::killFamily()
{
    const bool strays = folderIsOwn && !hasEnded();
    kill();
    if (groupId <= 1) { // 0 and 1 would name this program's own group, and every process
        return;
    }
    ::kill(static_cast<pid_t>(-groupId), SIGKILL);
    if (strays) {
        killStrays();
    }
}

// What left the group (setsid) still has the environment of this run, whose folder no other run
// and no other program has as LOCALAPPDATA. Systems without such a list of processes keep it.
void Jt9Process::killStrays() const
{
    const QByteArray end(1, '\0');
    const QByteArray mark = end + "LOCALAPPDATA=" + workingDirectory().toLocal8Bit() + end;
    const QDir processes(QStringLiteral("/proc"));
    for (const QString &id : processes.entryList(QDir::Dirs, QDir::Unsorted)) {
        QFile environment(processes.filePath(id + QStringLiteral("/environ")));
        if (id.toInt() > 1 && environment.open(QIODevice::ReadOnly) &&
            (end + environment.readAll()).contains(mark)) {
            ::kill(id.toInt(), SIGKILL);
        }
    }
}

#endif

} // namespace outpost
