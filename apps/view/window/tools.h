#pragma once

#include "../wishes.h"

#include <QObject>
#include <QUndoStack>

#include <cstddef>
#include <vector>

namespace irmcore::view {

/// A tool with the number that it is called by: "S2".
struct PlacedTool {
    Tool tool;
    int number = 0; ///< from 1 among its kind; the lowest that was free
};

/// The tools on the picture, which of them is selected, and what was done to them.
class Tools : public QObject {
    Q_OBJECT
public:
    static constexpr std::size_t mostSpots = 12;
    static constexpr std::size_t mostLines = 8;
    static constexpr std::size_t mostAreas = 8;

    explicit Tools(QObject* parent = nullptr);

    const std::vector<PlacedTool>& all() const { return m_tools; }
    std::vector<Tool> wished() const;
    /// Null when there is none.
    const PlacedTool* find(int id) const;
    int selected() const { return m_selected; } ///< 0: none
    void select(int id);
    QUndoStack& history() { return m_history; }

    /// Places and selects one. An area's corners are put in order. Returns its identity, or 0 when
    /// there are as many as can be; `refused` says so.
    int place(ToolKind kind, Span where);
    /// Changes of the same gesture are undone together. See `newGesture`.
    void change(int id, const Span& where, int gesture);
    void remove(int id);
    void clear();
    int newGesture() { return ++m_gesture; }

    /// Those of an earlier time, with nothing to undo. What is too many is left out.
    void restore(const std::vector<PlacedTool>& tools);

Q_SIGNALS:
    void changed();
    void selectionChanged(int id);
    void refused(const QString& text);

private:
    friend class ToolsChange;
    void set(std::vector<PlacedTool> tools);
    std::size_t count(ToolKind kind) const;

    std::vector<PlacedTool> m_tools;
    int m_selected = 0;
    int m_lastId = 0;
    int m_gesture = 0;
    QUndoStack m_history;
};

/// As many as there can be of a kind.
constexpr std::size_t mostOf(ToolKind kind) {
    return kind == ToolKind::spot   ? Tools::mostSpots
           : kind == ToolKind::line ? Tools::mostLines
                                    : Tools::mostAreas;
}

} // namespace irmcore::view
