#pragma once

#include <QString>

namespace outpost
{

// The heading of the Help / About dialog, HTML.
QString helpHeading();

// The help page itself, plain text, lines separated by LF.
QString helpText();

} // namespace outpost
