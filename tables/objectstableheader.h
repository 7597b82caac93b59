#pragma once

#include <QHeaderView>

// The column header of the objects tables. Qt's header forgets its size hint whenever
// its sections are resized, which a table that stretches its columns and sizes the id
// column to its contents does on every frame, and measures every header text anew for
// it. The hint depends only on the texts, the font and the style, so it is kept until
// one of them changes.
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

    mutable QSize m_sizeHint;
    QMetaObject::Connection m_headerTexts;
};
