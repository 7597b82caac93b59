// A road configuration, as a person may have typed it into the settings file, laid out
// by the road builder and taken by everything that receives the road: the traffic
// scheme (painted horizontally with true proportions and vertically stretched), the
// objects helper (which learns from a vehicle on it) and the road editor.

#include "objectshelper.h"
#include "roadbuilder.h"
#include "roadconfigwidget.h"
#include "roadobjectswidget.h"

#include <QApplication>
#include <QDateTime>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

void require(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "road: %s\n", what);
        std::abort();
    }
}

bool finite(const QPointF& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y());
}

struct Harness
{
    std::unique_ptr<QApplication> app; // first made, last gone
    RoadBuilder builder;
    ObjectsHelper helper;
    std::unique_ptr<RoadObjectsWidget> scheme;
    std::unique_ptr<RoadConfigWidget> editor;
};

// Never destroyed at exit, where Qt's own globals may already be gone; the replay
// driver takes it down in order (orvexFuzzTearDown).
Harness& harness()
{
    static Harness* h = new Harness;
    return *h;
}

void checkGeometry(RoadBuilder* builder)
{
    using B = RoadBuilder;
    QObject::connect(builder, &B::applyingRoadStarted, [](const QRectF& rect, const QPointF& o) {
        require(finite(rect.topLeft()) && finite(rect.bottomRight()) && finite(o),
                "road rectangle not finite");
    });
    QObject::connect(builder, &B::roadAxisLine, [](const QPolygonF& axis) {
        for (const QPointF& p : axis)
            require(finite(p), "axis point not finite");
    });
    QObject::connect(builder, &B::distanceLines, [](const QMap<int, QPolygonF>& lines) {
        for (const QPolygonF& line : lines) {
            for (const QPointF& p : line)
                require(finite(p), "border point not finite");
        }
    });
}

void wire(Harness& h)
{
    using B = RoadBuilder;
    using R = RoadObjectsWidget;
    RoadObjectsWidget* scheme = h.scheme.get();
    QObject::connect(&h.builder, &B::applyingRoadStarted, scheme, &R::startApplyingRoad);
    QObject::connect(&h.builder, &B::applyingRoadStarted, &h.helper,
                     &ObjectsHelper::startApplyingRoad);
    QObject::connect(&h.builder, &B::roadAxisLine, scheme, &R::setRoadAxisLine);
    QObject::connect(&h.builder, &B::laneBorderLines, scheme, &R::setLaneBorderLines);
    QObject::connect(&h.builder, &B::roadBorderLines, scheme, &R::setRoadBorderLines);
    QObject::connect(&h.builder, &B::laneCenterLines, &h.helper,
                     &ObjectsHelper::setLaneCenterLines);
    QObject::connect(&h.builder, &B::distanceLines, scheme, &R::setDistanceLines);
    QObject::connect(&h.builder, &B::roadTanAngles, scheme, &R::setRoadTanAngles);
    QObject::connect(&h.builder, &B::applyingRoadFinished, scheme, &R::finishApplyingRoad);
    QObject::connect(&h.builder, &B::applyingRoadFinished, &h.helper,
                     &ObjectsHelper::finishApplyingRoad);
    QObject::connect(&h.helper, &ObjectsHelper::sortingFinished, scheme, &R::finishFilling);
    QObject::connect(&h.helper, &ObjectsHelper::averageTracks, scheme, &R::setAverageTracks);
    checkGeometry(&h.builder);
}

// The scheme's scale for the road it was given: usable, or none at all.
void checkScale(const RoadObjectsWidget* scheme)
{
    const SchemeGeometry& g = scheme->geometry();
    if (!g.isValid())
        return;
    require(std::isfinite(g.scaleX()) && std::isfinite(g.scaleY()) && g.scaleX() > 0
                && g.scaleY() > 0,
            "scheme scale not a positive number");
    require(std::isfinite(g.aspect()) && g.aspect() > 0, "scheme aspect not a positive number");
}

void paint(RoadObjectsWidget* scheme)
{
    checkScale(scheme);
    QImage image(scheme->size(), QImage::Format_RGB32);
    scheme->render(&image);
}

// One radar frame with a vehicle near the first lane's centre, while the radar works.
void driveOneVehicle(Harness& h)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    h.helper.setRadarState(2);
    h.helper.startFilling();
    h.scheme->startFilling();
    h.helper.setFrameDateTimeUtc(now);
    h.scheme->setFrameDateTimeUtc(now);
    h.helper.setCycleNumber(20);
    h.helper.addObject(7, 15.0, 0.2, 40.0, 2.5, 4.6, now);
    h.scheme->addObject(7, 15.0, 0.2, 40.0, 2.5, 4.6, now);
    h.helper.finishFilling();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Qt's warnings about odd values are expected here and would drown the fuzzer's own.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Harness& h = harness();
    h.app = std::make_unique<QApplication>(*argc, *argv);
    h.scheme = std::make_unique<RoadObjectsWidget>();
    h.editor = std::make_unique<RoadConfigWidget>();
    wire(h);
    h.scheme->setShowCurrentTracks(true);
    h.scheme->setShowAverageTracks(true);
    h.scheme->resize(640, 400);
    h.scheme->show();
    return 0;
}

// For the replay driver: the widgets and Qt torn down in order before exit.
extern "C" void orvexFuzzTearDown()
{
    Harness& h = harness();
    h.editor.reset();
    h.scheme.reset();
    h.app.reset();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Harness& h = harness();
    const QJsonObject config
        = QJsonDocument::fromJson(QByteArray(reinterpret_cast<const char*>(data), int(size)))
              .object();

    h.scheme->setDrawVertical(false);
    h.scheme->setKeepAspectRatio(true);
    h.scheme->resize(640, 400);
    h.builder.setRoadConfig(config);
    h.editor->setRoadConfig(config);
    driveOneVehicle(h);
    paint(h.scheme.get());

    h.scheme->setDrawVertical(true);
    h.scheme->setKeepAspectRatio(false);
    h.scheme->resize(300, 700);
    paint(h.scheme.get());
    return 0;
}
