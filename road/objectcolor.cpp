#include "objectcolor.h"

#include <array>

namespace {

struct Pair
{
    QColor base;
    QColor text;
};

const std::array<Pair, ObjectColor::Count>& palette()
{
    const QColor black(0, 0, 0);
    const QColor white(255, 255, 255);
    static const std::array<Pair, ObjectColor::Count> pairs{{
        {QColor(255, 255, 255), black}, {QColor(255, 255, 0), black},
        {QColor(255, 0, 255), black},   {QColor(0, 255, 255), black},
        {QColor(255, 0, 0), white},     {QColor(0, 255, 0), black},
        {QColor(0, 0, 255), white},     {QColor(255, 255, 127), black},
        {QColor(255, 127, 255), black}, {QColor(127, 255, 255), black},
        {QColor(255, 127, 127), black}, {QColor(127, 255, 127), black},
        {QColor(127, 127, 255), white}, {QColor(255, 127, 0), black},
        {QColor(255, 0, 127), white},   {QColor(0, 255, 127), black},
        {QColor(0, 127, 255), white},   {QColor(127, 0, 255), white},
        {QColor(127, 255, 0), black},   {QColor(159, 159, 159), black},
        {QColor(127, 127, 0), white},   {QColor(127, 0, 127), white},
        {QColor(0, 127, 127), white},   {QColor(127, 0, 0), white},
        {QColor(0, 127, 0), white},
    }};
    return pairs;
}

} // namespace

const QColor& ObjectColor::base(quint8 id)
{
    return palette()[id % Count].base;
}

const QColor& ObjectColor::text(quint8 id)
{
    return palette()[id % Count].text;
}
