#pragma once

#include <QProcess>
#include <memory>

namespace outpost
{

// One decoder run as a child process, without a window, and the one place that knows how a system
// ends a process together with everything that it has started: a process group, on Windows a job
// object. What leaves the group is known by its environment, in which LOCALAPPDATA is the working
// directory, provided that no other run has that folder. Destruction ends whatever is left.
class Jt9Process : public QProcess
{
public:
    // Whether the exit code of a crash is the signal's number; else the code tells what happened.
    static const bool crashIsSignal;

    explicit Jt9Process(bool folderIsOwn);
    ~Jt9Process() override;

    // Starts it and waits until it runs; false when it does not.
    bool launch(const QString &program, const QStringList &arguments, int startMs);
    void killFamily();

protected:
    void setupChildProcess() override; // runs in the child; never on Windows

private:
    struct Family;
    std::unique_ptr<Family> family;
};

} // namespace outpost
