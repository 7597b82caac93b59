// Cost of one radar frame in a full objects history (100,000 rows held): 64 objects,
// a few of them only carried over, each measured one inserted under its object's
// previous row, and the trim of as many of the oldest rows. Vehicles come and go, so
// groups end and new ones start at the bottom; one object stays in view the whole time,
// so its group reaches back to the oldest rows. Then the cost of saving the full
// history with the window's own button.
//
// Usage: bench_history [frames]   (default 2000)

#include "historytablemodel.h"
#include "historytablewidget.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

constexpr int ObjectsPerFrame = 64;
constexpr int FrameIntervalMs = 100; // one radar cycle
constexpr int FramesInView = 120; // how long a vehicle stays in the radar's range
constexpr int CarriedOverEvery = 16; // one object in this many is missed in a frame

// Drives the history like the client: the frame time, then every stored object.
class Feeder
{
public:
    explicit Feeder(HistoryTableWidget* history)
        : m_history(history)
        , m_start(QDateTime::currentDateTimeUtc())
    { }

    void frame()
    {
        const QDateTime time = m_start.addMSecs(m_frame * FrameIntervalMs);
        const QDateTime earlier = time.addMSecs(-FrameIntervalMs);
        m_history->startFilling();
        m_history->setFrameDateTimeUtc(time);
        for (int slot = 0; slot < ObjectsPerFrame; ++slot) {
            // Slot 0 is a vehicle that never leaves; the others are replaced by a new
            // vehicle (a new id) every FramesInView frames, at staggered times.
            const qint64 generation = slot == 0 ? 0 : (m_frame + slot * 7) / FramesInView;
            const quint8 id = quint8((slot + generation * ObjectsPerFrame) % 255 + 1);
            const bool missed = (m_frame + slot) % CarriedOverEvery == 0;
            const double age = double((m_frame + slot * 7) % FramesInView);
            m_history->addObject(id, slot % 2 ? -22.0 : 25.0, 0.1 * (slot % 3 - 1),
                                 std::fmod(age * 2.2 + slot, 250.0), (slot % 4 - 1.5) * 3.5,
                                 4.0 + slot % 12, missed ? earlier : time);
        }
        m_history->finishFilling();
        ++m_frame;
    }

private:
    HistoryTableWidget* m_history;
    QDateTime m_start;
    qint64 m_frame = 0;
};

// The time this thread ran: on a machine shared with other work it leaves out the
// time the scheduler gave to others, which the wall clock counts.
qint64 threadCpuNs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return qint64(t.tv_sec) * 1000000000 + t.tv_nsec;
}

struct Figures
{
    double mean = 0, median = 0, p95 = 0, max = 0;
};

Figures figures(std::vector<qint64> ns)
{
    Figures f;
    for (qint64 c : ns)
        f.mean += double(c);
    f.mean /= double(ns.size());
    std::sort(ns.begin(), ns.end());
    f.median = double(ns[ns.size() / 2]);
    f.p95 = double(ns[ns.size() * 95 / 100]);
    f.max = double(ns.back());
    return f;
}

void print(const char* what, const Figures& f)
{
    std::printf("  %-44s mean %7.1f us, median %7.1f us, p95 %7.1f us, max %7.1f us\n", what,
                f.mean / 1000, f.median / 1000, f.p95 / 1000, f.max / 1000);
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 2000;

    HistoryTableWidget history(nullptr, Qt::Window);
    history.resize(800, 600);
    history.setPaintObjects(true);
    history.show();
    history.setEnabled(true);
    QApplication::processEvents();
    Feeder feeder(&history);

    QElapsedTimer clock;
    clock.start();
    while (history.model()->rowCount() < HistoryTableWidget::MaxRows) {
        feeder.frame();
        QApplication::processEvents();
    }
    std::printf("objects history: %d objects per frame (1 in %d carried over), %d rows held; "
                "filled in %.1f s\n",
                ObjectsPerFrame, CarriedOverEvery, history.model()->rowCount(),
                double(clock.elapsed()) / 1000);

    auto measure = [&](bool follow) {
        QScrollBar* bar = history.tableView()->verticalScrollBar();
        bar->setValue(follow ? bar->maximum() : bar->maximum() / 2);
        for (int f = 0; f < 200; ++f) { // warm up
            feeder.frame();
            QApplication::processEvents();
        }
        std::vector<qint64> intake, intakeCpu, withPaint;
        for (int f = 0; f < frames; ++f) {
            QElapsedTimer frameClock;
            frameClock.start();
            const qint64 cpuStart = threadCpuNs();
            feeder.frame();
            intakeCpu.push_back(threadCpuNs() - cpuStart);
            intake.push_back(frameClock.nsecsElapsed());
            // The layout of the changed rows and the window's one repaint.
            QApplication::processEvents();
            withPaint.push_back(frameClock.nsecsElapsed());
        }
        std::printf(" %s, %d frames, %d rows held after them:\n",
                    follow ? "following the newest row" : "scrolled to the middle", frames,
                    history.model()->rowCount());
        print("frame taken (start, 64 objects, trim, finish)", figures(intake));
        print("  the same in CPU time of this thread", figures(intakeCpu));
        print("frame with its layout and repaint", figures(withPaint));
    };
    measure(false);
    measure(true);

    // Saving, as the operator does it, into "history" beside this program.
    const QDir directory(HistoryTableWidget::exportDirectory());
    const QStringList before = directory.entryList(QDir::Files);
    auto* save = history.findChild<QPushButton*>(QStringLiteral("saveToFileButton"));
    std::vector<qint64> saves;
    for (int i = 0; i < 5; ++i) {
        QElapsedTimer saveClock;
        saveClock.start();
        save->click();
        saves.push_back(saveClock.nsecsElapsed());
    }
    QStringList written = directory.entryList(QDir::Files);
    for (const QString& name : before)
        written.removeOne(name);
    qint64 bytes = 0;
    for (const QString& name : qAsConst(written)) {
        bytes = std::max(bytes, QFileInfo(directory.filePath(name)).size());
        QFile::remove(directory.filePath(name));
    }
    std::printf(" saving %d rows to a file (%.1f MB):\n", history.model()->rowCount(),
                double(bytes) / 1e6);
    print("save (button click to file closed)", figures(saves));
    return 0;
}
