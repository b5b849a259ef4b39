#pragma once

#include "../explain/opened.h"

#include <QString>

#include <cstdio>
#include <vector>

namespace irmcore::app {

/// One curve over the common abscissa of a diagram.
struct Curve {
    QString name;
    std::vector<double> values; ///< not finite where there is none
    bool right = false;         ///< belongs to the right axis
};

/// What there is to draw or to print. Titles name the quantity and its unit.
struct Diagram {
    QString title;
    QString xTitle;
    QString yTitle;
    QString rightTitle; ///< empty without a right axis
    std::vector<double> x;
    std::vector<Curve> curves;
};

/// A kind of diagram, and how it comes from a camera.
struct DiagramKind {
    const char* name;
    const char* what;
    Diagram (*make)(OpenedCamera& camera);
};
const std::vector<DiagramKind>& diagramKinds();

/// A line of names, then a line for each abscissa; empty fields where a curve has no value.
void printCsv(std::FILE* to, const Diagram& diagram);

} // namespace irmcore::app
