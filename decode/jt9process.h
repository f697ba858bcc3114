#pragma once

#include <QProcess>
#include <memory>

namespace outpost
{

// A decoder run as a child process, without a window. Destruction ends the decoder and everything
// it has started: its process group or, on Windows, its job object. A process that has left the
// group is identified by its environment, where LOCALAPPDATA is the working directory, provided
// that no other run uses that folder.
class Jt9Process : public QProcess
{
public:
    // Whether exitCode() is the number of a signal after a crash. Otherwise it is the crash's own
    // code.
    static const bool crashIsSignal;

    explicit Jt9Process(bool folderIsOwn);
    ~Jt9Process() override;

    // Starts the decoder and waits up to `startMs` until it runs; returns false if it does not.
    bool launch(const QString &program, const QStringList &arguments, int startMs);
    void killFamily();

protected:
    void setupChildProcess() override; // runs in the child; not called on Windows

private:
    struct Family;
    std::unique_ptr<Family> family;
};

} // namespace outpost
