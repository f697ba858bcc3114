#pragma once

#include <QProcess>

#ifdef Q_OS_WIN
#include <memory>
#endif

namespace outpost
{

// One decoder run as a child process, without a window, and the one place that knows how a system
// ends a process together with everything that it has started: a process group, on Windows a job
// object. What leaves the group is known by its environment, in which LOCALAPPDATA is the working
// directory, provided that no other run has that folder. Destruction ends whatever is left.
class Jt9Process : public QProcess
{
public:
    explicit Jt9Process(bool folderIsOwn);
    ~Jt9Process() override;

    // Starts it and waits until it runs; false when it does not.
    bool launch(const QString &program, const QStringList &arguments, int startMs);
    void killFamily();

#ifdef Q_OS_WIN
private:
    struct CloseJob {
        void operator()(void *job) const;
    };
    const _PROCESS_INFORMATION *handles() const; // of the running child; null when there is none

    std::unique_ptr<void, CloseJob> job;
#else
protected:
    void setupChildProcess() override;

private:
    // A pipe of which every process of the run has the writing end and none ever writes.
    struct Lifeline {
        Lifeline();
        ~Lifeline();
        Q_DISABLE_COPY(Lifeline)
        void closeWritingEnd();

        int readingEnd = -1;
        int writingEnd = -1;
    };

    bool hasEnded() const;
    void killStrays() const;

    const bool folderIsOwn;
    Lifeline lifeline;
    qint64 groupId = 0; // 0: not started
#endif
};

} // namespace outpost
