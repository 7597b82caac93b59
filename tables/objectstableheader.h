#pragma once

#include <QHeaderView>

// The column header of the objects tables. Qt's header forgets its size hint whenever
// its sections are resized, which a table that stretches its columns and sizes the id
// column to its contents does on every frame, and measures every header text anew for
// it. The hint depends only on the texts, the font and the style, so it is kept until
// one of them changes.
//
// Nor does it lay itself out again when only rows move, which the history announces
// with every frame: Qt's header, being a view of the model too, would otherwise
// rebuild its sections and repaint after each of them.
class ObjectsTableHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit ObjectsTableHeader(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    void setModel(QAbstractItemModel* model) override;

protected:
    bool event(QEvent* event) override;

private:
    void forgetSizeHint();
    void onLayoutChanged(const QList<QPersistentModelIndex>& parents,
                         QAbstractItemModel::LayoutChangeHint hint);

    mutable QSize m_sizeHint;
    QMetaObject::Connection m_headerTexts;
    QMetaObject::Connection m_layout;
};
