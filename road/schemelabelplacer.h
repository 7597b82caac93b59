#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <vector>

// Finds places for the side labels of the traffic scheme's small objects so that no
// label covers another. A label first tries its usual place, just beside its object;
// then the places around the object, nearest first, preferring those that cover no
// other object. A label that had to move is to be joined to its object by a leader
// line. Where nothing is free the label is cut to the object's id, which takes the
// first free place or, failing that, its usual place over the others: the id stays
// readable.
class SchemeLabelPlacer
{
public:
    struct Label
    {
        QPoint anchor; // the object's reported point on the screen
        QRect glyph; // the screen bounding box of the object's rectangle
        int clearance = 0; // the usual place starts this far right of the anchor
        QSize size; // the whole label
        QSize shortSize; // the label cut to the id
    };
    struct Placement
    {
        QRect box;
        bool moved = false; // not at its usual place: draw a leader line
        bool shortened = false; // only the id fits
    };

    // Starts a frame: labels stay inside the view; no label is placed yet.
    void reset(const QRect& view);
    // An object's glyph, which labels avoid where they can.
    void addGlyph(const QRect& glyph);
    // Places a label inside the view, clear of every label placed before it in this
    // frame.
    Placement place(const Label& label);

private:
    bool findPlace(const Label& label, const QSize& size, QRect& box) const;
    // Inside the view and clear of the labels placed so far.
    bool isFree(const QRect& box) const;
    bool coversNoGlyph(const QRect& box) const;

    // The boxes in a grid over the view, so that a place is compared only with the
    // boxes near it: a crowded frame tries dozens of places for each of 64 labels.
    // Boxes reaching past the view are kept in its edge cells.
    class Grid
    {
    public:
        void reset(const QRect& view);
        void add(const QRect& box);
        // Whether any box added is hit by the given one.
        bool hits(const QRect& box) const;

    private:
        void cellRange(const QRect& box, int* left, int* top, int* right, int* bottom) const;

        QPoint m_origin;
        int m_columns = 0;
        int m_rows = 0;
        // The boxes by cell, row by row, each kept in every cell it reaches: a place is
        // compared with the boxes in its cells without looking them up elsewhere.
        std::vector<std::vector<QRect>> m_cells;
        // The box that last hit a place: the places tried around one object are mostly
        // blocked by the same neighbour.
        mutable QRect m_lastHit;
    };

    QRect m_view;
    Grid m_glyphGrid;
    Grid m_labelGrid;
};
