#pragma once

#include <QDateTime>
#include <QLocale>

namespace outpost
{

// A time in ASCII digits in every language: clients read these texts, and files and folders are
// named after them. Qt's own toString(format) uses the digits of the user's language.
template <typename Time> // QTime or QDateTime
QString timeText(const Time &time, const QString &format)
{
    return QLocale::c().toString(time, format);
}

} // namespace outpost
