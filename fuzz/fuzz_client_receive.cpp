// The client's receive path: every server message, binary (the radar's records behind
// an optional time-stamp header) or text (the server's JSON), through a real client of
// either protocol variant, with every signal it emits read to the last argument and
// the objects helper fed as the main window feeds it.

#include "iorvexclient.h"
#include "objectshelper.h"
#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "roadbuilder.h"
#include "servermessagestream.h"
#include "signalsink.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QMetaMethod>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// The protocol's own limits of a decoded road object (ids, 0.1 m/s, 0.064 m, 0.2 m).
constexpr double MaxSpeed = 102.4;
constexpr double MaxRange = 524.288;
constexpr double MaxLength = 51.0;
constexpr int ObjectIds = 64;

void require(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "receive path: %s\n", what);
        std::abort();
    }
}

bool within(double value, double low, double high)
{
    return std::isfinite(value) && value >= low - 1e-9 && value <= high + 1e-9;
}

// The socket hands every message to these two slots of the client; the fuzzer takes
// the socket's place and calls them the same way.
struct ServerPort
{
    QMetaMethod binary;
    QMetaMethod text;

    static const ServerPort& instance()
    {
        static const ServerPort port = [] {
            const QMetaObject& meta = IOrvexClient::staticMetaObject;
            ServerPort p{meta.method(meta.indexOfSlot("onServerDataReceived(QByteArray)")),
                         meta.method(meta.indexOfSlot("onServerTextReceived(QString)"))};
            require(p.binary.isValid() && p.text.isValid(), "the client's message slots moved");
            return p;
        }();
        return port;
    }

    void deliver(IOrvexClient* client, const ServerMessageStream::Message& message) const
    {
        const bool invoked
            = message.text
                  ? text.invoke(client, Qt::DirectConnection,
                                Q_ARG(QString, QString::fromUtf8(message.bytes)))
                  : binary.invoke(client, Qt::DirectConnection, Q_ARG(QByteArray, message.bytes));
        require(invoked, "a message slot could not be called");
    }
};

// The road the objects helper learns on: short, so that resetting its tracks for every
// input stays cheap; straight, then a curve, a lane either side.
struct LearningRoad
{
    QRectF rect;
    QMap<int, QPolygonF> laneCentres;

    static const LearningRoad& instance()
    {
        static const LearningRoad road = [] {
            LearningRoad r;
            RoadBuilder builder;
            QObject::connect(&builder, &RoadBuilder::applyingRoadStarted,
                             [&r](const QRectF& rect) { r.rect = rect; });
            QObject::connect(&builder, &RoadBuilder::laneCenterLines,
                             [&r](const QMap<int, QPolygonF>& lines) { r.laneCentres = lines; });
            builder.setRoadConfig(QJsonDocument::fromJson(R"({
                "parts": {"0": {"width": 2}, "1": {"width": 3.5, "is_lane": true},
                          "-1": {"width": 3.5, "is_lane": true}},
                "sections": [{"length": 40}, {"is_curved": true, "length": 40, "radius": 200},
                             {"length": 20}]})")
                                      .object());
            return r;
        }();
        return road;
    }
};

void checkDecodedValues(IOrvexClient* client)
{
    using C = IOrvexClient;
    QObject::connect(
        client, &C::objectData,
        [](quint8 id, double xSpeed, double ySpeed, double xRange, double yRange, double length,
           const QDateTime& lastDetected) {
            require(id < ObjectIds, "object id beyond 6 bits");
            require(within(xSpeed, -MaxSpeed, MaxSpeed) && within(ySpeed, -MaxSpeed, MaxSpeed),
                    "speed outside the protocol's range");
            require(within(xRange, -MaxRange, MaxRange) && within(yRange, -MaxRange, MaxRange),
                    "range outside the protocol's range");
            require(within(length, 0, MaxLength), "length outside 0..51 m");
            require(lastDetected.isValid(), "object without a detection time");
        });
    QObject::connect(client, &C::uptimeInfo, [](int days, int h, int m, int s, int ms) {
        require(days >= 0 && h >= 0 && h < 24 && m >= 0 && m < 60 && s >= 0 && s < 60 && ms >= 0
                    && ms < 1000,
                "uptime fields out of range");
    });
    QObject::connect(client, &C::radarStateChanged, [](int state) {
        require(state >= C::BadData && state <= C::Working, "unknown radar state");
    });
    QObject::connect(client, &C::radarCommandStateChanged, [](int, int state, int) {
        require(state >= C::None && state <= C::Error, "unknown command state");
    });
    QObject::connect(client, &C::frameDateTimeUtc, [](const QDateTime& time) {
        require(time.isValid() && time.timeSpec() == Qt::UTC, "frame time not a UTC time");
    });
}

void feedObjectsHelper(IOrvexClient* client, ObjectsHelper* helper)
{
    using C = IOrvexClient;
    using H = ObjectsHelper;
    QObject::connect(client, &C::frameStarted, helper, &H::startFilling);
    QObject::connect(client, &C::frameDateTimeUtc, helper, &H::setFrameDateTimeUtc);
    QObject::connect(client, &C::cycleNumber, helper, &H::setCycleNumber);
    QObject::connect(client, &C::objectData, helper, &H::addObject);
    QObject::connect(client, &C::frameFinished, helper,
                     static_cast<void (H::*)()>(&H::finishFilling));
    QObject::connect(client, &C::radarStateChanged, helper, &H::setRadarState);
}

void checkHelperResults(ObjectsHelper* helper)
{
    QObject::connect(helper, &ObjectsHelper::sortingFinished, [](const QVector<quint8>& order) {
        require(order.size() <= ObjectIds, "more objects in a frame than ids");
    });
    QObject::connect(helper, &ObjectsHelper::averageTracks, [](const QMap<int, QPolygonF>& tracks) {
        for (const QPolygonF& track : tracks) {
            for (const QPointF& p : track)
                require(std::isfinite(p.x()) && std::isfinite(p.y()),
                        "average track point not finite");
        }
    });
}

void queueCommands(IOrvexSerialConnectionClient* client)
{
    // Unconnected, each command fails its first try and waits for its next one at the
    // head of the queue, where the input's acknowledgements find it.
    client->sendCmdGetHardwareInfo();
    client->sendCmdSetPosition(5.0, -1.5, 2.25, -90.0, 3.0, 0.5);
    client->sendCmdGetPolygonSpeedParam(1, 2);
    client->sendCmdSetDebugVariableValue(5, -1);
}

// One client of each variant with its receivers, made once: making them for every
// input would cost more than most inputs. Between inputs each is put back into the
// state of a new client (see reset), so that an input behaves the same whenever it runs.
struct Harness
{
    OrvexSerialDunvelProtocolClient dunvel;
    OrvexSerialPakorProtocolClient pakor;
    ObjectsHelper helper;
    SignalSink sink;
    bool learnt = false; // the radar worked during this input: the helper learnt

    Harness()
    {
        const LearningRoad& road = LearningRoad::instance();
        helper.startApplyingRoad(road.rect);
        helper.setLaneCenterLines(road.laneCentres);
        helper.finishApplyingRoad();
        checkHelperResults(&helper);
        for (IOrvexSerialConnectionClient* client :
             std::initializer_list<IOrvexSerialConnectionClient*>{&dunvel, &pakor}) {
            sink.listenTo(client);
            checkDecodedValues(client);
            feedObjectsHelper(client, &helper);
            QObject::connect(client, &IOrvexClient::radarStateChanged, [this](int state) {
                learnt = learnt || IOrvexClient::isWorking(state);
            });
        }
    }

    // Back to a new client's state: cycle number 0 (taken from a message that carries
    // it), no radar state, no objects, no commands, no counts, no timer running. The
    // helper forgets what it learnt through the radar's going offline.
    void reset(IOrvexSerialConnectionClient* client)
    {
        const quint16 id = client->objectControlCanId();
        QByteArray cycleZero(11, '\0');
        cycleZero[0] = char(id >> 8);
        cycleZero[1] = char(id & 0xFF);
        cycleZero[2] = 8;
        ServerPort::instance().deliver(client, {false, cycleZero});
        client->disconnectFromServer();
        client->resetStatistics();
        client->setEmitStatsEnabled(false);
        if (learnt)
            helper.setRadarState(IOrvexClient::Offline);
        learnt = false;
    }
};

Harness& harness()
{
    static Harness h;
    return h;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // A UTC zone given by rule, so that the local times of the CAN statistics are not
    // looked up in the zone files for every message.
    qputenv("TZ", "UTC0");
    static QCoreApplication app(*argc, *argv);
    ServerPort::instance();
    harness();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Harness& h = harness();
    const quint8 setup = ServerMessageStream::setup(data, size);
    IOrvexSerialConnectionClient* client;
    if (setup & ServerMessageStream::PakorVariant)
        client = &h.pakor;
    else
        client = &h.dunvel;
    client->setEmitStatsEnabled(setup & ServerMessageStream::EmitStatistics);
    if (setup & ServerMessageStream::QueuedCommands)
        queueCommands(client);
    for (const ServerMessageStream::Message& m : ServerMessageStream::messages(data, size))
        ServerPort::instance().deliver(client, m);
    h.reset(client);
    return 0;
}
