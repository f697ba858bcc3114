#include "decode/jt9process.h"

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <QDir>
#include <csignal>
#include <unistd.h>
#endif

Jt9Process::~Jt9Process()
{
    killFamily();
}

#ifdef Q_OS_WIN

Jt9Process::Jt9Process() : job(CreateJobObjectW(nullptr, nullptr))
{
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job)
        SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                sizeof(limits));
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
        if (job)
            AssignProcessToJobObject(job.get(), child->hProcess);
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
    if (job)
        TerminateJobObject(job.get(), 1);
}

#else

Jt9Process::Jt9Process() = default;

void Jt9Process::setupChildProcess()
{
    ::setpgid(0, 0); // the child leads a group of its own, whose id is the child's
}

bool Jt9Process::launch(const QString &program, const QStringList &arguments, int startMs)
{
    start(program, arguments);
    groupId = processId();
    return waitForStarted(startMs);
}

void Jt9Process::killFamily()
{
    kill();
    if (groupId <= 1) // 0 and 1 would name this program's own group, and every process
        return;
    ::kill(static_cast<pid_t>(-groupId), SIGKILL);
    killStrays();
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
            (end + environment.readAll()).contains(mark))
            ::kill(id.toInt(), SIGKILL);
    }
}

#endif
