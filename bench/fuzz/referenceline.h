#pragma once

#include <QString>
#include <optional>

namespace outpost
{

// The five fields of a decode line as text.
struct ReferenceLine {
    QString time;
    QString snr;
    QString dt;
    QString frequency;
    QString message;
};

// Parses a decode line by hand, field by field.
class ReferenceReader
{
public:
    explicit ReferenceReader(const QString &line) : text(line.trimmed()) {}

    std::optional<ReferenceLine> read()
    {
        ReferenceLine line;
        line.time = digits();
        const bool timeOk = line.time.size() == 6 && blanks();
        const bool snrOk = timeOk && number(&line.snr) && blanks();
        const bool dtOk = snrOk && number(&line.dt) && fraction(&line.dt) && blanks();
        const bool frequencyOk = dtOk && number(&line.frequency) && blanks();
        if (!frequencyOk || next() != QLatin1Char('~')) {
            return std::nullopt;
        }
        ++position;
        if (!blanks() || position == text.size() ||
            text.indexOf(QLatin1Char('\n'), position) >= 0) {
            return std::nullopt;
        }
        line.message = text.mid(position);
        return line;
    }

private:
    QChar next() const { return position < text.size() ? text.at(position) : QChar(); }
    static bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }
    static bool isBlank(QChar c)
    {
        return c == QLatin1Char(' ') || (c >= QLatin1Char('\t') && c <= QLatin1Char('\r'));
    }

    QString digits()
    {
        const int start = position;
        while (isDigit(next())) {
            ++position;
        }
        return text.mid(start, position - start);
    }
    bool blanks()
    {
        const int start = position;
        while (isBlank(next())) {
            ++position;
        }
        return position > start;
    }
    bool number(QString *field)
    {
        if (next() == QLatin1Char('+') || next() == QLatin1Char('-')) {
            *field = text.at(position++);
        }
        const QString all = digits();
        *field += all;
        return !all.isEmpty();
    }
    bool fraction(QString *field)
    {
        if (next() != QLatin1Char('.')) {
            return true;
        }
        ++position;
        const QString all = digits();
        *field += QLatin1Char('.') + all;
        return !all.isEmpty();
    }

    const QString text;
    int position = 0;
};

inline std::optional<ReferenceLine> readReferenceLine(const QString &line)
{
    return ReferenceReader(line).read();
}

} // namespace outpost
