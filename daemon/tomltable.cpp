#include "daemon/tomltable.h"

#include "base/frequency.h"
#include "daemon/nearestname.h"

#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace outpost
{

namespace
{
constexpr int maxQuoted = 40;
constexpr int maxText = 1000;

QString typeText(TomlType type)
{
    switch (type) {
    case TomlType::Text:
        return QStringLiteral("a text");
    case TomlType::Whole:
        return QStringLiteral("a whole number");
    case TomlType::Number:
        return QStringLiteral("a number with a point");
    case TomlType::Flag:
        return QStringLiteral("true or false");
    case TomlType::Time:
        return QStringLiteral("a date or a time");
    case TomlType::List:
        return QStringLiteral("a list");
    case TomlType::Table:
        return QStringLiteral("a table");
    }
    return QString();
}

bool holdsControls(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar letter) { return letter.category() == QChar::Other_Control; });
}

// As it may stand in the file without quotes.
QString keyText(const QString &key)
{
    static const QRegularExpression bare(QStringLiteral("\\A[A-Za-z0-9_-]{1,40}\\z"));
    return bare.match(key).hasMatch() ? key : quotedText(key);
}

QString wrongText(const QString &text)
{
    if (text.trimmed().isEmpty()) {
        return QStringLiteral("the text is empty");
    }
    if (holdsControls(text)) {
        return QStringLiteral("the text holds a control character");
    }
    return text.size() > maxText
               ? QStringLiteral("the text is longer than %1 characters").arg(maxText)
               : QString();
}
} // namespace

QString quotedText(const QString &text)
{
    QString shown = text.size() > maxQuoted ? text.left(maxQuoted - 1) + QChar(0x2026) : text;
    std::replace_if(
        shown.begin(), shown.end(), [](QChar letter) { return !letter.isPrint(); }, QChar(0xfffd));
    return QLatin1Char('"') + shown + QLatin1Char('"');
}

void ConfigProblems::add(int line, const QString &key, const QString &wrong, const QString &right)
{
    addText(line, key, QStringLiteral("%1; it must be %2").arg(wrong, right));
}

void ConfigProblems::addText(int line, const QString &key, const QString &text)
{
    if (firstText.isEmpty() || line < firstLine) {
        firstLine = line;
        firstText = QStringLiteral("%1: %2: ").arg(QString::number(line), key) + text;
    }
}

QString ConfigProblems::first() const
{
    return firstText;
}

TomlTable::TomlTable(const TomlValue &table, const QString &name, ConfigProblems &allProblems)
    : values(table), prefix(name), problems(allProblems)
{
}

QString TomlTable::pathOf(const QString &key) const
{
    return prefix.isEmpty() ? key : prefix + QLatin1Char('.') + key;
}

const TomlValue *TomlTable::find(const QString &key) const
{
    const auto found = std::find_if(values.members.begin(), values.members.end(),
                                    [&key](const TomlMember &member) { return member.key == key; });
    return found == values.members.end() ? nullptr : &found->value;
}

const TomlValue *TomlTable::value(const char *key, const QVector<TomlType> &types,
                                  const QString &right)
{
    known.append(QLatin1String(key));
    const TomlValue *found = find(QLatin1String(key));
    if (found != nullptr && !types.contains(found->type)) {
        refuse(key, QStringLiteral("this is ") + typeText(found->type), right);
        return nullptr;
    }
    return found;
}

bool TomlTable::has(const char *key) const
{
    return find(QLatin1String(key)) != nullptr;
}

std::optional<QString> TomlTable::text(const char *key, const QString &right)
{
    const TomlValue *found = value(key, {TomlType::Text}, right);
    if (found == nullptr) {
        return std::nullopt;
    }
    const QString wrong = wrongText(found->text);
    if (!wrong.isEmpty()) {
        refuse(key, wrong, right);
        return std::nullopt;
    }
    return found->text;
}

std::optional<int> TomlTable::whole(const char *key, int min, int max)
{
    const QString right = QStringLiteral("a whole number from %1 to %2").arg(min).arg(max);
    const TomlValue *found = value(key, {TomlType::Whole}, right);
    if (found == nullptr) {
        return std::nullopt;
    }
    if (found->whole < min || found->whole > max) {
        refuse(key, QStringLiteral("%1 is out of range").arg(found->whole), right);
        return std::nullopt;
    }
    return static_cast<int>(found->whole);
}

std::optional<double> TomlTable::mhz(const char *key)
{
    const QString right = QStringLiteral("a frequency from 0.001 to 3000 MHz, as in 14.074");
    const TomlValue *found = value(key, {TomlType::Whole, TomlType::Number}, right);
    if (found == nullptr) {
        return std::nullopt;
    }
    if (!(found->number >= lowestFrequencyMhz && found->number <= highestFrequencyMhz)) {
        refuse(key, QStringLiteral("%1 is out of range").arg(found->number), right);
        return std::nullopt;
    }
    return found->number;
}

std::optional<bool> TomlTable::flag(const char *key)
{
    const TomlValue *found = value(key, {TomlType::Flag}, QStringLiteral("true or false"));
    return found == nullptr ? std::nullopt : std::optional(found->flag);
}

QVector<TomlValue> TomlTable::list(const char *key, TomlType type, const QString &right)
{
    const TomlValue *found = value(key, {TomlType::List}, right);
    if (found == nullptr) {
        return {};
    }
    if (found->items.isEmpty()) {
        refuse(key, QStringLiteral("the list is empty"), right);
    }
    for (const TomlValue &item : found->items) {
        if (item.type != type) {
            problems.add(item.line, pathOf(QLatin1String(key)),
                         QStringLiteral("in the list is ") + typeText(item.type), right);
            return {};
        }
    }
    return found->items;
}

TomlValue TomlTable::table(const char *key)
{
    const TomlValue *found =
        value(key, {TomlType::Table},
              QStringLiteral("a table, which begins with [%1]").arg(QLatin1String(key)));
    return found == nullptr ? TomlValue() : *found;
}

void TomlTable::refuse(const char *key, const QString &wrong, const QString &right)
{
    const TomlValue *found = find(QLatin1String(key));
    problems.add(found == nullptr ? values.line : found->line, pathOf(QLatin1String(key)), wrong,
                 right);
}

void TomlTable::refuseMissing(const char *key, const QString &right)
{
    if (!has(key)) {
        missing.append({QLatin1String(key), right});
    }
}

void TomlTable::refuseOthers()
{
    const auto isKnown = [this](const TomlMember &member) { return known.contains(member.key); };
    if (std::all_of(values.members.begin(), values.members.end(), isKnown)) {
        for (const auto &[key, right] : std::as_const(missing)) {
            problems.add(values.line, pathOf(key), QStringLiteral("the key is missing"), right);
        }
    }
    for (const TomlMember &member : values.members) {
        if (!isKnown(member)) {
            problems.addText(member.value.line, pathOf(keyText(member.key)),
                             QStringLiteral("there is no such key; the nearest one is %1")
                                 .arg(nearestName(member.key.left(maxQuoted), known)));
        }
    }
}

} // namespace outpost
