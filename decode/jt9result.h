#pragma once

#include <QString>
#include <QStringList>

namespace outpost
{

enum class Jt9Cause {
    None,
    NoDecoder,     // detail: its path; empty when none is chosen
    NotStarted,    // detail: the system's reason
    Overran,       // detail: the time limit in s
    Aborted,       // by this program
    Killed,        // detail: the signal's number
    ExitCode,      // detail: the exit code, not 0
    OldFolderLeft, // an old scratch folder of the worker could not be removed
    FolderLeft,    // the scratch folder could not be removed; the lines are valid
    FolderMissing, // the worker's scratch folder could not be created
    WavNotWritten, // detail: the reason
    TooManyLines,  // detail: how many were kept
    PassedOver     // the period waited too long for its turn
};

// Why a run of the decoder gave no lines, or not all of them.
struct Jt9Failure {
    Jt9Cause cause = Jt9Cause::None;
    QString detail;

    bool operator==(const Jt9Failure &other) const
    {
        return cause == other.cause && detail == other.detail;
    }
};

// The result of one run of the decoder.
struct Jt9Result {
    QStringList lines;
    Jt9Failure failure;
};

// An exit code as system documentation writes it. On Windows, crash codes are negative and known by
// their hexadecimal form, such as "0xC0000005".
QString exitCodeText(int code);

// The failure in words for the log, as in "no decodes, jt9 was killed by signal 11". Empty if there
// is none.
QString failureText(const Jt9Failure &failure);

} // namespace outpost
