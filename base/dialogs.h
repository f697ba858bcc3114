#pragma once

class QDialog;
class QDialogButtonBox;
class QString;
class QWidget;

namespace outpost
{

// Message boxes with only an OK button. The text is always plain, since a path, an entry or a
// system error may look like markup.
void showWarning(QWidget *parent, const QString &title, const QString &text);
void showInformation(QWidget *parent, const QString &title, const QString &text);

// A box with one Close button, which is the default.
QDialogButtonBox *newCloseBox(QDialog *dialog);

// Sets the Tab order of a box with several buttons to their visible order. Qt uses the order in
// which they were created.
void tabInShownOrder(const QDialogButtonBox &box);

} // namespace outpost
