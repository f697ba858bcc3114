#pragma once

class QDialog;

namespace outpost
{

// Keeps a dialog in reach on a screen that is too small for it: it takes the screen's free area,
// and where it cannot be made that small, what is above its buttons scrolls. Where it fits, nothing
// changes. For a dialog with a button box at the end of its layout.
void keepOnScreen(QDialog *dialog);

// Whether the content scrolls. The dialog's size is then no longer that of its contents.
bool scrollsToFitScreen(const QDialog &dialog);

} // namespace outpost
