#include "store/statuslogwindow.h"

#include "store/textchanges.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QVBoxLayout>
#include <utility>

namespace outpost
{

namespace
{

constexpr int refreshIntervalMs = 5000;

QPlainTextEdit *newLogView(QWidget *parent)
{
    auto *view = new QPlainTextEdit(parent);
    view->setReadOnly(true);
    view->setUndoRedoEnabled(false); // otherwise every refresh would be kept
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setAccessibleName(QStringLiteral("Receiver status log"));
    return view;
}

void makeChanges(QTextDocument *document, const QVector<TextChange> &changes)
{
    QTextCursor cursor(document);
    cursor.beginEditBlock();
    for (const TextChange &change : changes) {
        cursor.setPosition(change.position);
        cursor.setPosition(change.position + change.length, QTextCursor::KeepAnchor);
        cursor.insertText(change.text);
    }
    cursor.endEditBlock();
}

// A reader's place in the log: positions in its text, and the scroll position.
struct Reader {
    int anchor;
    int position; // equal to the anchor if nothing is selected
    int firstInView;
    int column;
};

Reader readerOf(const QPlainTextEdit &view)
{
    const QTextCursor cursor = view.textCursor();
    const int line = view.verticalScrollBar()->value(); // without wrapping, its unit is a line
    return {cursor.anchor(), cursor.position(), view.document()->findBlockByNumber(line).position(),
            view.horizontalScrollBar()->value()};
}

// Qt's own cursors do not fit: text inserted at the end of a selection would become part of it, and
// a selected number that changes would lose its selection.
Reader changedReader(const QVector<TextChange> &changes, const Reader &reader)
{
    const bool forwards = reader.anchor < reader.position;
    const bool backwards = reader.position < reader.anchor;
    return {changedPosition(changes, reader.anchor, backwards ? Edge::End : Edge::Start),
            changedPosition(changes, reader.position, forwards ? Edge::End : Edge::Start),
            changedPosition(changes, reader.firstInView, Edge::Start), reader.column};
}

void restoreReader(QPlainTextEdit *view, const Reader &reader)
{
    QTextDocument *document = view->document();
    QTextCursor cursor(document);
    cursor.setPosition(reader.anchor);
    cursor.setPosition(reader.position, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor); // may scroll
    view->verticalScrollBar()->setValue(document->findBlock(reader.firstInView).blockNumber());
    view->horizontalScrollBar()->setValue(reader.column);
}

// The text as QPlainTextEdit returns it; a name in a hand-edited log may contain any kind of line
// break.
QString asShown(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar &character : text) {
        switch (character.unicode()) {
        case '\r':
        case 0x2028: // line separator
        case 0x2029: // paragraph separator
        case 0xfdd0: // Qt's own marks of the begin and end of a frame
        case 0xfdd1:
            character = QLatin1Char('\n');
            break;
        case 0xa0: // no-break space
            character = QLatin1Char(' ');
            break;
        default:
            break;
        }
    }
    return text;
}

} // namespace

StatusLogWindow::StatusLogWindow(QWidget *parent, std::function<void()> onRefreshDue)
    : LiveDialog(parent, QStringLiteral("PELQ Kiwi Outpost Status Log"), refreshIntervalMs,
                 std::move(onRefreshDue)),
      view(newLogView(this))
{
    resize(760, 500);
    contents()->addWidget(view);
    addCloseBox();
}

void StatusLogWindow::refresh(const QString &text)
{
    const QVector<TextChange> changes = textChanges(view->toPlainText(), asShown(text));
    if (changes.isEmpty()) {
        return;
    }
    const Reader reader = readerOf(*view);
    makeChanges(view->document(), changes);
    restoreReader(view, changedReader(changes, reader));
}

} // namespace outpost
