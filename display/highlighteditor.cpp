#include "display/highlighteditor.h"

#include "base/dialogs.h"
#include "base/smallscreen.h"
#include "display/highlightcalls.h"

#include <QInputDialog>
#include <QPlainTextEdit>

namespace outpost
{

namespace
{

// The text as edited by the operator; nothing if cancelled. In QInputDialog::getMultiLineText() the
// editor takes the Tab key, so that the buttons cannot be reached with it.
std::optional<QString> askForCalls(QWidget *parent, const QString &text)
{
    const QString label = QStringLiteral("Enter up to 10 complete callsigns, one per line.\n"
                                         "Matching decode rows will be highlighted yellow.");
    QInputDialog dialog(parent);
    dialog.setOption(QInputDialog::UsePlainTextEditForTextInput);
    dialog.setWindowTitle(QStringLiteral("Highlight Calls"));
    dialog.setLabelText(label);
    dialog.setTextValue(text);
    auto *editor = dialog.findChild<QPlainTextEdit *>();
    editor->setTabChangesFocus(true);
    editor->setAccessibleName(label);
    keepOnScreen(&dialog);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return dialog.textValue();
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

std::optional<QStringList> editedHighlightCalls(QWidget *parent, const QStringList &calls)
{
    std::optional<QString> text = calls.join(QLatin1Char('\n'));
    while ((text = askForCalls(parent, *text))) {
        const HighlightEdit edit = parseHighlightCalls(*text);
        if (!edit.invalidEntry.isEmpty()) {
            warnOfInvalidCall(parent, edit.invalidEntry);
        } else if (edit.calls.size() > maxHighlightCalls) {
            showWarning(parent, QStringLiteral("Too Many Callsigns"),
                        QStringLiteral("Enter no more than 10 callsigns."));
        } else {
            return edit.calls;
        }
    }
    return std::nullopt;
}

} // namespace outpost
