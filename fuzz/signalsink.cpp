#include "signalsink.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

quint64 mix(quint64 digest, const void* bytes, size_t size)
{
    // FNV-1a: cheap, and it reads every byte.
    const auto* b = static_cast<const unsigned char*>(bytes);
    for (size_t i = 0; i < size; ++i)
        digest = (digest ^ b[i]) * 1099511628211ull;
    return digest;
}

template<typename T> quint64 mixValue(quint64 digest, const void* argument)
{
    T value;
    std::memcpy(&value, argument, sizeof value);
    return mix(digest, &value, sizeof value);
}

} // namespace

SignalSink::SignalSink(QObject* parent)
    : QObject(parent)
{ }

void SignalSink::listenTo(QObject* sender)
{
    const QMetaObject* meta = sender->metaObject();
    const int slotBase = QObject::staticMetaObject.methodCount();
    for (int i = QObject::staticMetaObject.methodCount(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.methodType() != QMetaMethod::Signal)
            continue;
        QMetaObject::connect(sender, i, this, slotBase + m_signals.size(), Qt::DirectConnection);
        m_signals.append(method);
    }
}

int SignalSink::qt_metacall(QMetaObject::Call call, int id, void** arguments)
{
    id = QObject::qt_metacall(call, id, arguments);
    if (id < 0 || call != QMetaObject::InvokeMetaMethod)
        return id;
    if (id < m_signals.size())
        touch(m_signals.at(id), arguments);
    return -1;
}

void SignalSink::touch(const QMetaMethod& signal, void** arguments)
{
    ++m_emissions;
    quint64 d = m_digest;
    for (int i = 0; i < signal.parameterCount(); ++i) {
        const void* a = arguments[i + 1];
        switch (signal.parameterType(i)) {
        case QMetaType::Bool: d = mixValue<bool>(d, a); break;
        case QMetaType::Int: d = mixValue<int>(d, a); break;
        case QMetaType::UInt: d = mixValue<uint>(d, a); break;
        case QMetaType::UChar: d = mixValue<uchar>(d, a); break;
        case QMetaType::UShort: d = mixValue<ushort>(d, a); break;
        case QMetaType::ULongLong: d = mixValue<qulonglong>(d, a); break;
        case QMetaType::Double: d = mixValue<double>(d, a); break;
        case QMetaType::QString: {
            const auto* s = static_cast<const QString*>(a);
            d = mix(d, s->constData(), size_t(s->size()) * sizeof(QChar));
            break;
        }
        case QMetaType::QByteArray: {
            const auto* b = static_cast<const QByteArray*>(a);
            d = mix(d, b->constData(), size_t(b->size()));
            break;
        }
        case QMetaType::QDateTime: {
            const auto* t = static_cast<const QDateTime*>(a);
            const qint64 ms = t->isValid() ? t->toMSecsSinceEpoch() : -1;
            d = mix(d, &ms, sizeof ms);
            break;
        }
        default:
            // A signal with an argument type that is not read here would go unchecked.
            std::fprintf(stderr, "SignalSink: no reader for %s of %s\n",
                         signal.parameterTypes().at(i).constData(),
                         signal.methodSignature().constData());
            std::abort();
        }
    }
    m_digest = d;
}
