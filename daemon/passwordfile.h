#pragma once

#include <QString>

namespace outpost
{

struct PasswordOutcome {
    QString password;
    QString error; // "FILE: why"; empty: there is a password
};

// The first line of a file, UTF-8, without its end. Errors never quote it.
PasswordOutcome readPassword(const QString &path);

} // namespace outpost
