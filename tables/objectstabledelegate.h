#pragma once

#include <QFont>
#include <QHash>
#include <QStaticText>
#include <QStyledItemDelegate>

// Draws the cells of the objects tables. A radar frame refills up to a few hundred
// cells several times a second; the style's own item drawing lays out every text three
// times (size, elision, drawing). Here each distinct text is shaped once and kept, and
// the number texts of successive frames repeat a lot.
class ObjectsTableDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit ObjectsTableDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const QStaticText& staticText(const QString& text, const QFont& font) const;

    // Shaped texts for one font; dropped whole when the font changes or it grows large.
    mutable QHash<QString, QStaticText> m_texts;
    mutable QFont m_font;
};
