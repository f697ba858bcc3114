#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace outpost
{

enum class TomlType { Text, Whole, Number, Flag, Time, List, Table };

struct TomlMember;

// A value of a TOML document and where it stands; what is not of its type is empty.
struct TomlValue {
    TomlType type = TomlType::Table;
    int line = 1;
    QString text;
    qint64 whole = 0;
    double number = 0; // of whole numbers, too
    bool flag = false;
    QVector<TomlValue> items;    // of a list
    QVector<TomlMember> members; // of a table, by key
};

struct TomlMember {
    QString key;
    TomlValue value;
};

struct TomlOutcome {
    TomlValue table;
    int errorLine = 0; // 0: the whole document
    QString error;     // "KEY: …" where there is a key; empty: the document is read
};

// Reads a document of at most 1 MiB with lines of at most 2000 bytes; nothing nests deeper than
// eight levels. Errors quote no more of the document than a key or a letter.
TomlOutcome readToml(const QByteArray &document);

} // namespace outpost
