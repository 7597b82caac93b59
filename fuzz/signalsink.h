#pragma once

#include <QMetaMethod>
#include <QObject>
#include <QVector>

// Listens to every signal of the objects it is given and reads every argument of every
// emission, so that a fuzzer sees a fault in what a signal carries (a dangling string,
// an uninitialised time) where a real receiver would. It keeps nothing but a digest.
// Like QSignalSpy it receives through qt_metacall, one slot index per signal heard.
class SignalSink : public QObject
{
public:
    explicit SignalSink(QObject* parent = nullptr);

    // Every signal that `sender` declares beyond those of QObject itself.
    void listenTo(QObject* sender);
    quint64 digest() const { return m_digest; }
    quint64 emissions() const { return m_emissions; }

    int qt_metacall(QMetaObject::Call call, int id, void** arguments) override;

private:
    void touch(const QMetaMethod& signal, void** arguments);

    QVector<QMetaMethod> m_signals;
    quint64 m_digest = 0;
    quint64 m_emissions = 0;
};
