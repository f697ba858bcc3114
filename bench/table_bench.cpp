// Appends a period of 100 decodes to a table with three periods, resizes it and paints it.

#include "app/mainwindow.h"
#include "base/timetext.h"
#include "bench/compare.h"
#include "bench/windowbenches.h"
#include "decode/ft8decode.h"
#include "display/decoderow.h"
#include "fixture/operator.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableWidget>

namespace outpost
{

namespace
{
constexpr int periodRows = 100;
constexpr int fullRows = 3 * periodRows;

// A table with the same settings and the same rows, without parsing lines or checking rows again.
class BareTable
{
public:
    BareTable();
    void append(const QVector<DecodeCells> &rows);
    QTableWidget *widget() { return table; }

private:
    void setSections(QHeaderView::ResizeMode mode);

    QMainWindow window;
    QTableWidget *table;
};

BareTable::BareTable() : table(new QTableWidget(&window))
{
    table->setColumnCount(5);
    table->setHorizontalHeaderLabels(decodeHeaders());
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->verticalHeader()->hide();
    setSections(QHeaderView::ResizeToContents);
    window.setCentralWidget(table);
    window.resize(345, 245);
    window.show();
}

void BareTable::setSections(QHeaderView::ResizeMode mode)
{
    table->verticalHeader()->setSectionResizeMode(mode);
    table->horizontalHeader()->setSectionResizeMode(mode);
}

// The sections are fixed while rows change, so the table is measured once.
void BareTable::append(const QVector<DecodeCells> &rows)
{
    table->setUpdatesEnabled(false);
    setSections(QHeaderView::Fixed);
    const int first = table->rowCount();
    table->setRowCount(first + rows.size());
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < 5; ++column) {
            table->setItem(first + row, column,
                           new QTableWidgetItem(rows.at(row).at(static_cast<size_t>(column))));
        }
    }
    table->model()->removeRows(0, qMax(0, table->rowCount() - fullRows));
    table->resizeColumnsToContents();
    table->resizeRowsToContents();
    int width = 2 * table->frameWidth() + table->verticalScrollBar()->sizeHint().width() + 10;
    for (int column = 0; column < 5; ++column) {
        width += table->columnWidth(column);
    }
    window.resize(width, window.height());
    table->setUpdatesEnabled(true);
    table->scrollToBottom();
    table->selectRow(table->rowCount() - 1);
    setSections(QHeaderView::ResizeToContents);
    for (QHeaderView *header : {table->verticalHeader(), table->horizontalHeader()}) {
        header->resizeSections(QHeaderView::Fixed);
    }
}

QString label(int period)
{
    return timeText(QTime(0, 0).addSecs(15 * period), QStringLiteral("HH:mm:ss"));
}

class PaintCount : public QObject
{
public:
    explicit PaintCount(QTableWidget *table) { table->viewport()->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

void paintAll()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

void table(benchmark::State &state)
{
    qint64 nowMs = 0;
    MainWindow window(StationOptions{[&nowMs] { return nowMs; }});
    window.show();
    BareTable bare;
    const PaintCount ownPaints(decodeTableOf(window));
    const PaintCount barePaints(bare.widget());
    const QStringList lines = benchLines(periodRows);
    int period = 0;
    QVector<DecodeCells> rows;

    const auto prepare = [&] {
        ++period;
        rows.clear();
        for (const QString &line : lines) {
            rows.append(*decodeCells(label(period / 2), parseDecodeLine(line)));
        }
        paintAll();
    };
    const auto own = [&] {
        const int before = ownPaints.count;
        window.appendDecodes(label(period / 2), parseDecodeLines(lines));
        paintAll();
        if (ownPaints.count == before) {
            qFatal("the station's table was not painted");
        }
    };
    const auto reference = [&] {
        const int before = barePaints.count;
        bare.append(rows);
        paintAll();
        if (barePaints.count == before) {
            qFatal("the bare table was not painted");
        }
    };
    for (int i = 0; i < 3; ++i) {
        period = 2 * i;
        prepare();
        own();
        reference();
    }
    compare(state, prepare, own, reference);
    if (decodeTableOf(window)->rowCount() != fullRows || bare.widget()->rowCount() != fullRows) {
        qFatal("the tables are not full");
    }
}
} // namespace

void registerTableBench(int rounds)
{
    benchmark::RegisterBenchmark("table", table)->UseManualTime()->Iterations(rounds);
}

} // namespace outpost
