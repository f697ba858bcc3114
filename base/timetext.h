#pragma once

#include <QDateTime>
#include <QLocale>

namespace outpost
{

// A time in ASCII digits whatever the operator's language: clients read these texts, files and
// folders are named by them. The toolkit's own toString(format) takes the language's digits.
template <typename Time> // QTime or QDateTime
QString timeText(const Time &time, const QString &format)
{
    return QLocale::c().toString(time, format);
}

} // namespace outpost
