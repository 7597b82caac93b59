#include "rawwebsocketserver.h"

#include <QCryptographicHash>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtEndian>

namespace {
const QByteArray WebSocketGuid = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
enum Opcode : quint8 { Close = 0x8, Ping = 0x9, Pong = 0xA };
} // namespace

RawWebSocketServer::RawWebSocketServer(QObject* parent)
    : QObject(parent)
    , m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = m_server->nextPendingConnection()) {
            if (m_socket)
                m_socket->abort();
            m_socket = socket;
            m_buffer.clear();
            m_handshakeDone = false;
            connect(socket, &QTcpSocket::readyRead, this, &RawWebSocketServer::onReadyRead);
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                if (m_socket == socket)
                    m_socket = nullptr;
                socket->deleteLater();
            });
        }
    });
    m_server->listen(QHostAddress::LocalHost, 0);
}

RawWebSocketServer::~RawWebSocketServer() = default;

QUrl RawWebSocketServer::url() const
{
    return QUrl(QStringLiteral("ws://127.0.0.1:%1/").arg(m_server->serverPort()));
}

void RawWebSocketServer::setPongMode(PongMode mode, const QByteArray& fixedPayload)
{
    m_pongMode = mode;
    m_fixedPayload = fixedPayload;
}

void RawWebSocketServer::onReadyRead()
{
    if (!m_socket)
        return;
    m_buffer.append(m_socket->readAll());
    if (!m_handshakeDone) {
        const int end = m_buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        QByteArray key;
        for (const QByteArray& line : m_buffer.left(end).split('\n')) {
            if (line.toLower().startsWith("sec-websocket-key:"))
                key = line.mid(line.indexOf(':') + 1).trimmed();
        }
        m_buffer.remove(0, end + 4);
        const QByteArray accept
            = QCryptographicHash::hash(key + WebSocketGuid, QCryptographicHash::Sha1).toBase64();
        m_socket->write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                        "Connection: Upgrade\r\nSec-WebSocket-Accept: "
                        + accept + "\r\n\r\n");
        m_handshakeDone = true;
        ++m_connectionCount;
        emit clientConnected();
    }
    while (m_socket && handleFrame()) { }
}

bool RawWebSocketServer::handleFrame()
{
    // Client frames are always masked.
    if (m_buffer.size() < 2)
        return false;
    const auto* b = reinterpret_cast<const uchar*>(m_buffer.constData());
    const quint8 opcode = b[0] & 0x0F;
    qint64 length = b[1] & 0x7F;
    int header = 2;
    if (length == 126) {
        if (m_buffer.size() < 4)
            return false;
        length = qFromBigEndian<quint16>(b + 2);
        header = 4;
    } else if (length == 127) {
        if (m_buffer.size() < 10)
            return false;
        length = qint64(qFromBigEndian<quint64>(b + 2));
        header = 10;
    }
    if (m_buffer.size() < header + 4 + length)
        return false;
    const QByteArray mask = m_buffer.mid(header, 4);
    QByteArray payload = m_buffer.mid(header + 4, int(length));
    for (int i = 0; i < payload.size(); ++i)
        payload[i] = char(payload[i] ^ mask[i % 4]);
    m_buffer.remove(0, header + 4 + int(length));

    switch (opcode) {
    case Ping:
        emit pingReceived(payload);
        if (m_pongMode == PongMode::Echo)
            sendFrame(Pong, payload);
        else if (m_pongMode == PongMode::FixedPayload)
            sendFrame(Pong, m_fixedPayload);
        break;
    case Close: {
        const quint16 code = payload.size() >= 2 ? qFromBigEndian<quint16>(payload.constData()) : 0;
        emit closeReceived(code);
        sendFrame(Close, payload.left(2));
        if (m_socket)
            m_socket->disconnectFromHost();
        return false;
    }
    default: break;
    }
    return true;
}

void RawWebSocketServer::sendFrame(quint8 opcode, const QByteArray& payload)
{
    if (!m_socket)
        return;
    QByteArray frame;
    frame.append(char(0x80 | opcode));
    if (payload.size() < 126) {
        frame.append(char(payload.size()));
    } else {
        frame.append(char(126));
        frame.append(char(payload.size() >> 8));
        frame.append(char(payload.size() & 0xFF));
    }
    frame.append(payload);
    m_socket->write(frame);
}
