#include "decode/jt9process.h"

#include <QDir>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace outpost
{

namespace
{
// A pipe whose writing end every process of the run inherits and none writes to. When the last of
// them has exited, the reading end reports a hang-up.
class Lifeline
{
public:
    Lifeline()
    {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) == 0) {
            readingEnd = ends[0];
            writingEnd = ends[1];
        }
    }
    ~Lifeline()
    {
        closeWritingEnd();
        if (readingEnd >= 0) {
            ::close(readingEnd);
        }
    }
    Q_DISABLE_COPY(Lifeline)

    // Called in the child: keeps the writing end open in the decoder and its children.
    void handOn() const { ::fcntl(writingEnd, F_SETFD, 0); }

    void closeWritingEnd()
    {
        if (writingEnd >= 0) {
            ::close(std::exchange(writingEnd, -1));
        }
    }

    // Whether every process that had the writing end has exited or closed it.
    bool hasEnded() const
    {
        pollfd end = {readingEnd, POLLIN, 0};
        return readingEnd >= 0 && ::poll(&end, 1, 0) == 1 && (end.revents & POLLHUP) != 0;
    }

private:
    int readingEnd = -1;
    int writingEnd = -1;
};

// Kills the processes that left the group with setsid(). They keep the environment of their run,
// and no other process has its folder as LOCALAPPDATA. Does nothing on systems without /proc.
void killAllThatLiveIn(const QString &folder)
{
    const QByteArray end(1, '\0');
    const QByteArray mark = end + "LOCALAPPDATA=" + folder.toLocal8Bit() + end;
    const QDir processes(QStringLiteral("/proc"));
    for (const QString &id : processes.entryList(QDir::Dirs, QDir::Unsorted)) {
        QFile environment(processes.filePath(id + QStringLiteral("/environ")));
        if (id.toInt() > 1 && environment.open(QIODevice::ReadOnly) &&
            (end + environment.readAll()).contains(mark)) {
            ::kill(id.toInt(), SIGKILL);
        }
    }
}
} // namespace

struct Jt9Process::Family {
    bool folderIsOwn = false;
    Lifeline lifeline;
    qint64 groupId = 0; // 0: not started
};

const bool Jt9Process::crashIsSignal = true;

Jt9Process::Jt9Process(bool folderIsOwn) : family(std::make_unique<Family>())
{
    family->folderIsOwn = folderIsOwn;
}

Jt9Process::~Jt9Process()
{
    killFamily();
}

void Jt9Process::setupChildProcess()
{
    ::setpgid(0, 0); // the child leads a new group, whose id is its process id
    family->lifeline.handOn();
}

bool Jt9Process::launch(const QString &program, const QStringList &arguments, int startMs)
{
    start(program, arguments);
    family->lifeline.closeWritingEnd();
    family->groupId = processId();
    return waitForStarted(startMs);
}

// Once the decoder has been reaped and no process of its run is left, the system may reuse the
// group's id. Nothing is then signalled.
void Jt9Process::killFamily()
{
    const bool hasEnded = family->lifeline.hasEnded();
    kill();
    if (family->groupId <= 1) { // 0 and 1 stand for this program's own group and for every process
        return;
    }
    if (state() == NotRunning && hasEnded) {
        return;
    }
    ::kill(static_cast<pid_t>(-family->groupId), SIGKILL);
    if (family->folderIsOwn && !hasEnded) {
        killAllThatLiveIn(workingDirectory());
    }
}

} // namespace outpost
