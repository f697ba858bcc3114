#pragma once

#include "daemon/tomlreader.h"

#include <QPair>
#include <QStringList>
#include <QVector>
#include <optional>

namespace outpost
{

// A text as an error quotes it: in one line, and not at length.
QString quotedText(const QString &text);

// What is wrong with a configuration, in the order in which it was found.
class ConfigProblems
{
public:
    // `wrong` says what is; `right` completes "it must be".
    void add(int line, const QString &key, const QString &wrong, const QString &right);
    void addText(int line, const QString &key, const QString &text);
    // The one that stands first in the file, as "LINE: KEY: TEXT"; empty if nothing is wrong.
    QString first() const;

private:
    int firstLine = 0;
    QString firstText;
};

// The keys of one table. Each is asked for once; what is wrong with its value becomes a problem,
// and the value counts as missing.
class TomlTable
{
public:
    // `name` stands before the keys in problems. Both references outlive the table.
    TomlTable(const TomlValue &table, const QString &name, ConfigProblems &problems);

    bool has(const char *key) const;
    std::optional<QString> text(const char *key, const QString &right); // not empty, one line
    std::optional<int> whole(const char *key, int min, int max);
    std::optional<double> mhz(const char *key); // a dial frequency
    std::optional<bool> flag(const char *key);
    // The tables or texts of a list; none if one of them is something else.
    QVector<TomlValue> list(const char *key, TomlType type, const QString &right);
    // A table in it, empty if it is missing.
    TomlValue table(const char *key);

    void refuse(const char *key, const QString &wrong, const QString &right);
    void refuseMissing(const char *key, const QString &right);
    // To be called last: keys that were not asked for are unknown. Where there is one, no key
    // counts as missing: it may be the one, misspelt.
    void refuseOthers();

private:
    QString pathOf(const QString &key) const;
    const TomlValue *find(const QString &key) const;
    const TomlValue *value(const char *key, const QVector<TomlType> &types, const QString &right);

    const TomlValue &values;
    const QString prefix;
    ConfigProblems &problems;
    QStringList known;
    QVector<QPair<QString, QString>> missing; // keys, and what they must be
};

} // namespace outpost
