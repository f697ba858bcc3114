#include "app/mainwindow.h"
#include "base/dialogs.h"
#include "display/highlightcalls.h"

#include <QInputDialog>
#include <QPlainTextEdit>

namespace outpost
{

namespace
{

const QString callsKey = QStringLiteral("highlight/calls");

} // namespace

void MainWindow::loadHighlightCalls()
{
    highlightCalls = validHighlightCalls(options.settings.open().value(callsKey).toStringList());
}

bool MainWindow::matchesHighlightedCall(const QString &text) const
{
    return containsCall(text, highlightCalls);
}

namespace
{

// Lets the operator edit *text; false when the edit was cancelled. Qt's ready-made dialog
// would swallow the Tab key, and with it the way to the buttons.
bool askForCalls(QWidget *parent, QString *text)
{
    const QString label = QStringLiteral("Enter up to 10 complete callsigns, one per line.\n"
                                         "Matching decode rows will be highlighted yellow.");
    QInputDialog dialog(parent);
    dialog.setOption(QInputDialog::UsePlainTextEditForTextInput);
    dialog.setWindowTitle(QStringLiteral("Highlight Calls"));
    dialog.setLabelText(label);
    dialog.setTextValue(*text);
    auto *editor = dialog.findChild<QPlainTextEdit *>();
    editor->setTabChangesFocus(true);
    editor->setAccessibleName(label);
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    *text = dialog.textValue();
    return true;
}

void warnOfInvalidCall(QWidget *parent, const QString &entry)
{
    showWarning(
        parent, QStringLiteral("Invalid Callsign"),
        QStringLiteral("\"%1\" is not a valid callsign entry. Use only letters, numbers, and /, "
                       "with no spaces.")
            .arg(entry));
}

} // namespace

void MainWindow::editHighlightCalls()
{
    QString text = highlightCalls.join(QLatin1Char('\n'));
    while (askForCalls(this, &text)) {
        const HighlightEdit edit = parseHighlightCalls(text);
        if (!edit.invalidEntry.isEmpty()) {
            warnOfInvalidCall(this, edit.invalidEntry);
        } else if (edit.calls.size() > maxHighlightCalls) {
            showWarning(this, QStringLiteral("Too Many Callsigns"),
                        QStringLiteral("Enter no more than 10 callsigns."));
        } else {
            highlightCalls = edit.calls;
            options.settings.save(callsKey, highlightCalls);
            reapplyHighlights();
            return;
        }
    }
}

} // namespace outpost
