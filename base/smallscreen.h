#pragma once

class QDialog;

namespace outpost
{

// Keeps a dialog usable on a screen that is too small for it: the dialog takes the available area
// of the screen and, if it cannot be made that small, everything above its buttons scrolls. A
// dialog that fits is unchanged. Requires a button box at the end of the dialog's layout.
void keepOnScreen(QDialog *dialog);

// Whether the contents scroll. If so, the dialog's size no longer depends on them.
bool scrollsToFitScreen(const QDialog &dialog);

} // namespace outpost
