#pragma once

#include <QString>

namespace outpost
{

// The heading of the Help / About dialog, in HTML.
QString helpHeading();

// The text of the help page: plain text, lines separated by LF.
QString helpText();

} // namespace outpost
