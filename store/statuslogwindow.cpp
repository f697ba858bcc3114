#include "app/mainwindow.h"
#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/dialogs.h"
#include "base/lockfile.h"
#include "base/logline.h"
#include "base/smallscreen.h"
#include "store/textchanges.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>
#include <QVBoxLayout>

namespace outpost
{

namespace
{

constexpr int refreshIntervalMs = 5000;

// A damaged log gives way to a fresh one.
QJsonObject statusLogIn(const std::optional<QByteArray> &file)
{
    return parseJsonObject(file.value_or(QByteArray())).value_or(QJsonObject());
}

SaveResult addToStatusLog(const QString &path, const StatusSession &session, qint64 endMs)
{
    QDir().mkpath(QFileInfo(path).path());
    const auto lock = takeLock(path, changeWaitMs);
    const std::optional<QByteArray> file = readFile(path);
    const QJsonObject log = withFinishedSession(statusLogIn(file), session, endMs);
    return saveAtomically(path, QJsonDocument(log).toJson(), {}, waitToReplaceMs(file.has_value()));
}

QPlainTextEdit *newLogView(QDialog *dialog)
{
    auto *view = new QPlainTextEdit(dialog);
    view->setReadOnly(true);
    view->setUndoRedoEnabled(false); // or every refresh would be kept
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

// Where someone is in the log: positions in its text, and the column in view.
struct Reader {
    int anchor;
    int position; // as the anchor: nothing is selected
    int firstInView;
    int column;
};

Reader readerOf(const QPlainTextEdit &view)
{
    const QTextCursor cursor = view.textCursor();
    const int line = view.verticalScrollBar()->value(); // without wrapping, its unit
    return {cursor.anchor(), cursor.position(), view.document()->findBlockByNumber(line).position(),
            view.horizontalScrollBar()->value()};
}

// Qt's own cursors would not do: text that comes in at the end of a selection would join it, and a
// selected number that counts on would not stay selected.
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

// As the view gives it back: a name in a hand-edited log may hold line breaks of every kind.
QString asShown(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar &character : text) {
        switch (character.unicode()) {
        case '\r':
        case 0x2028: // line separator
        case 0x2029: // paragraph separator
        case 0xfdd0: // Qt's own marks of a frame's begin and end
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

// What the reader has selected stays selected, and what is in view stays there.
void replaceText(QPlainTextEdit *view, const QString &text)
{
    const QVector<TextChange> changes = textChanges(view->toPlainText(), asShown(text));
    if (changes.isEmpty()) {
        return;
    }
    const Reader reader = readerOf(*view);
    makeChanges(view->document(), changes);
    restoreReader(view, changedReader(changes, reader));
}

} // namespace

void MainWindow::startStatusSession()
{
    const QString host = profile.kiwiHost.trimmed();
    if (statusSession.active || host.isEmpty()) {
        return;
    }
    statusSession = {true, host, profile.kiwiPort, frequencyMhz, nowMs(), 0};
    refreshStatusBar();
    refreshStatusLogView();
}

void MainWindow::addSessionDecodes(qint64 count)
{
    if (statusSession.active && count > 0) {
        statusSession.decodes += count;
    }
}

void MainWindow::finishStatusSession()
{
    if (!statusSession.active) {
        return;
    }
    const SaveResult saved =
        addToStatusLog(statusLogPath(options.dataFolder), statusSession, nowMs());
    if (!saved) {
        logLine(QStringLiteral("Status log save failed: %1").arg(saved.error));
    }
    statusSession = {};
    refreshStatusBar();
    rebuildStatusHistory();
    refreshStatusLogView();
}

void MainWindow::rebuildStatusHistory()
{
    statusHistory = statusHistoryText(readFile(statusLogPath(options.dataFolder)));
}

void MainWindow::refreshStatusLogView()
{
    if (!statusLogView) {
        return;
    }
    const QString shownPath = QDir::toNativeSeparators(statusLogPath(options.dataFolder));
    replaceText(statusLogView, statusLogText(statusSession, nowMs(), shownPath, statusHistory));
}

void MainWindow::showStatusLogWindow()
{
    if (statusLogDialog) {
        statusLogDialog->show();
        statusLogDialog->raise();
        statusLogDialog->activateWindow();
        return;
    }
    buildStatusLogWindow();
    statusLogDialog->show();
}

void MainWindow::buildStatusLogWindow()
{
    rebuildStatusHistory();
    statusLogDialog = new QDialog(this);
    statusLogDialog->setAttribute(Qt::WA_DeleteOnClose);
    statusLogDialog->setWindowTitle(QStringLiteral("PELQ Kiwi Outpost Status Log"));
    statusLogDialog->resize(760, 500);
    statusLogView = newLogView(statusLogDialog);
    auto *layout = new QVBoxLayout(statusLogDialog);
    layout->addWidget(statusLogView);
    layout->addWidget(newCloseBox(statusLogDialog));
    keepOnScreen(statusLogDialog);
    statusLogTimer = new QTimer(statusLogDialog);
    connect(statusLogTimer, &QTimer::timeout, this, [this] { refreshStatusLogView(); });
    connect(statusLogDialog, &QObject::destroyed, this, [this] {
        statusLogDialog = nullptr;
        statusLogView = nullptr;
        statusLogTimer = nullptr;
    });
    refreshStatusLogView();
    statusLogTimer->start(refreshIntervalMs);
}

} // namespace outpost
