#pragma once

#include <QStringList>

namespace outpost
{

// The known name that a mistyped one most likely stands for: the one that takes the fewest letters
// typed, left out or replaced, whatever their case; its begin is near, too. The first of several;
// empty if none is known.
QString nearestName(const QString &name, const QStringList &known);

} // namespace outpost
