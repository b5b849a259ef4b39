#include "tools.h"

#include "wording.h"

#include <QUndoCommand>

#include <algorithm>
#include <utility>

namespace irmcore::view {

namespace {

bool same(const std::vector<PlacedTool>& a, const std::vector<PlacedTool>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const PlacedTool& one, const PlacedTool& other) {
                          return one.tool == other.tool && one.number == other.number;
                      });
}

} // namespace

/// The tools before and after. There are few of them.
class ToolsChange : public QUndoCommand {
public:
    ToolsChange(Tools& tools, std::vector<PlacedTool> after, const QString& text, int gesture = 0)
        : QUndoCommand(text), m_tools(tools), m_before(tools.m_tools), m_after(std::move(after)),
          m_gesture(gesture) {}

    void undo() override { m_tools.set(m_before); }
    void redo() override { m_tools.set(m_after); }
    int id() const override { return m_gesture > 0 ? 1 : -1; }
    bool mergeWith(const QUndoCommand* other) override {
        const auto* const next = dynamic_cast<const ToolsChange*>(other);
        if (next == nullptr || next->m_gesture != m_gesture)
            return false;
        m_after = next->m_after;
        // What was pulled back to where it had been is nothing to undo.
        setObsolete(same(m_before, m_after));
        return true;
    }

private:
    Tools& m_tools;
    std::vector<PlacedTool> m_before;
    std::vector<PlacedTool> m_after;
    int m_gesture;
};

Tools::Tools(QObject* parent) : QObject(parent) {}

std::vector<Tool> Tools::wished() const {
    std::vector<Tool> result;
    for (const PlacedTool& placed : m_tools)
        result.push_back(placed.tool);
    return result;
}

const PlacedTool* Tools::find(int id) const {
    const auto found = std::find_if(m_tools.begin(), m_tools.end(),
                                    [id](const PlacedTool& p) { return p.tool.id == id; });
    return found == m_tools.end() ? nullptr : &*found;
}

void Tools::select(int id) {
    const int wanted = find(id) != nullptr ? id : 0;
    if (wanted == m_selected)
        return;
    m_selected = wanted;
    Q_EMIT selectionChanged(m_selected);
}

std::size_t Tools::count(ToolKind kind) const {
    return static_cast<std::size_t>(
        std::count_if(m_tools.begin(), m_tools.end(),
                      [kind](const PlacedTool& p) { return p.tool.kind == kind; }));
}

int Tools::place(ToolKind kind, Span where) {
    if (count(kind) >= mostOf(kind)) {
        Q_EMIT refused(QStringLiteral("There are %1 %2s already, and no more can be measured. "
                                      "Remove one first.")
                           .arg(mostOf(kind))
                           .arg(kindName(kind)));
        return 0;
    }
    PlacedTool placed;
    placed.tool.id = ++m_lastId;
    placed.tool.kind = kind;
    placed.tool.place = kind == ToolKind::area ? app::measuring::asArea(where) : where;
    const auto taken = [&](int number) {
        return std::any_of(m_tools.begin(), m_tools.end(), [&](const PlacedTool& p) {
            return p.tool.kind == kind && p.number == number;
        });
    };
    placed.number = 1;
    while (taken(placed.number))
        ++placed.number;
    std::vector<PlacedTool> after = m_tools;
    after.push_back(placed);
    m_history.push(new ToolsChange(*this, std::move(after),
                                   QStringLiteral("place %1").arg(toolName(kind, placed.number))));
    select(placed.tool.id);
    return placed.tool.id;
}

void Tools::change(int id, const Span& where, int gesture) {
    const PlacedTool* const placed = find(id);
    if (placed == nullptr)
        return;
    std::vector<PlacedTool> after = m_tools;
    PlacedTool& changed = after[static_cast<std::size_t>(placed - m_tools.data())];
    changed.tool.place =
        placed->tool.kind == ToolKind::area ? app::measuring::asArea(where) : where;
    if (changed.tool == placed->tool)
        return;
    const QString name = toolName(placed->tool.kind, placed->number);
    m_history.push(
        new ToolsChange(*this, std::move(after), QStringLiteral("move %1").arg(name), gesture));
}

void Tools::remove(int id) {
    const PlacedTool* const placed = find(id);
    if (placed == nullptr)
        return;
    const QString name = toolName(placed->tool.kind, placed->number);
    std::vector<PlacedTool> after = m_tools;
    after.erase(after.begin() + (placed - m_tools.data()));
    m_history.push(new ToolsChange(*this, std::move(after), QStringLiteral("remove %1").arg(name)));
}

void Tools::clear() {
    if (!m_tools.empty())
        m_history.push(new ToolsChange(*this, {}, QStringLiteral("clear tools")));
}

void Tools::restore(const std::vector<PlacedTool>& tools) {
    m_history.clear();
    std::vector<PlacedTool> kept;
    for (PlacedTool placed : tools) {
        const ToolKind kind = placed.tool.kind;
        const auto alike = std::count_if(
            kept.begin(), kept.end(), [kind](const PlacedTool& p) { return p.tool.kind == kind; });
        if (static_cast<std::size_t>(alike) >= mostOf(kind))
            continue;
        placed.tool.id = ++m_lastId;
        if (kind == ToolKind::area)
            placed.tool.place = app::measuring::asArea(placed.tool.place);
        kept.push_back(placed);
    }
    set(std::move(kept));
}

void Tools::set(std::vector<PlacedTool> tools) {
    m_tools = std::move(tools);
    if (find(m_selected) == nullptr)
        select(0);
    Q_EMIT changed();
}

} // namespace irmcore::view
