#pragma once

#include <QString>
#include <QStringList>

namespace outpost
{

enum class Jt9Cause {
    None,
    NoDecoder,     // detail: its path; empty when none is chosen
    NotStarted,    // detail: the system's reason
    Overran,       // detail: the time that it had, in s
    Aborted,       // by this program
    Killed,        // detail: the signal's number
    ExitCode,      // detail: the code, other than 0
    OldFolderLeft, // an old scratch folder of the worker's could not be removed
    FolderLeft,    // the scratch folder could not be removed afterwards; the lines are kept
    FolderMissing, // the worker's scratch folder could not be made
    WavNotWritten, // detail: the reason
    TooManyLines   // detail: how many were kept
};

// Why a run of the decoder brought no lines, or not all that it printed.
struct Jt9Failure {
    Jt9Cause cause = Jt9Cause::None;
    QString detail;

    bool operator==(const Jt9Failure &other) const
    {
        return cause == other.cause && detail == other.detail;
    }
};

// What one run of the decoder brought.
struct Jt9Result {
    QStringList lines;
    Jt9Failure failure;
};

// An exit code as the system's documentation has it: those of crashes on Windows are negative and
// known by their hexadecimal form, such as "0xC0000005".
QString exitCodeText(int code);

// In words, for the log: "no decodes, jt9 was killed by signal 11". Empty for none.
QString failureText(const Jt9Failure &failure);

} // namespace outpost
