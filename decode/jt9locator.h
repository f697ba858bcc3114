#pragma once

#include <QString>
#include <QStringList>

// Where a decoder is looked for: files to try in order, then folders to search.
struct Jt9Places {
    QStringList candidates; // full paths of jt9 programs, best first
    QStringList roots;      // folders searched recursively for "jt9.exe"
};
