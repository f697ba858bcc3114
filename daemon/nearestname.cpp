#include "daemon/nearestname.h"

#include <QVector>
#include <algorithm>
#include <numeric>

namespace outpost
{

namespace
{
// Levenshtein's distance, row by row: entry i is that of the first i letters of `to`.
int distance(const QString &from, const QString &to)
{
    QVector<int> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar letter : from) {
        int diagonal = row.first()++;
        for (int i = 0; i < to.size(); ++i) {
            const int replaced = diagonal + (to.at(i) == letter ? 0 : 1);
            diagonal = row.at(i + 1);
            row[i + 1] = std::min({replaced, diagonal + 1, row.at(i) + 1});
        }
    }
    return row.last();
}

// Letters that are missing at the end count as one.
int cost(const QString &typed, const QString &known)
{
    return !typed.isEmpty() && known.startsWith(typed) && known != typed ? 1
                                                                         : distance(typed, known);
}
} // namespace

QString nearestName(const QString &name, const QStringList &known)
{
    const QString wanted = name.toLower();
    const auto nearest = std::min_element(
        known.begin(), known.end(), [&wanted](const QString &left, const QString &right) {
            return cost(wanted, left.toLower()) < cost(wanted, right.toLower());
        });
    return nearest == known.end() ? QString() : *nearest;
}

} // namespace outpost
