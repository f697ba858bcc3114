#pragma once

class QDialog;
class QDialogButtonBox;
class QString;
class QWidget;

namespace outpost
{

// Message boxes with OK alone. They show the text as it stands: a path, an entry or an error of the
// system may look like markup.
void showWarning(QWidget *parent, const QString &title, const QString &text);
void showInformation(QWidget *parent, const QString &title, const QString &text);

// Holds one Close button, which Enter presses.
QDialogButtonBox *newCloseBox(QDialog *dialog);

// To be called for a box of several buttons. Qt tabs through the buttons in the order of their
// creation; this makes it the visible order.
void tabInShownOrder(const QDialogButtonBox &box);

} // namespace outpost
