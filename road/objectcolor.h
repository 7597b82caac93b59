#pragma once

#include <QColor>
#include <QtGlobal>

// The colours road objects are painted in, picked by object id: a fill colour and a
// text colour that reads well on it. Id 0's pair is the one used for every object
// when painting in separate colours is switched off.
class ObjectColor
{
public:
    static constexpr int Count = 25;

    static const QColor& base(quint8 id);
    static const QColor& text(quint8 id);
};
