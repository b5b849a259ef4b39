// In place of the drawing in a build without Qt Charts or Qt Svg.
#include "../commands.h"
#include "charts.h"

namespace irmcore::app {

std::unique_ptr<QCoreApplication> makeChartApplication(int& argc, char** argv) {
    return std::make_unique<QCoreApplication>(argc, argv);
}

bool canDraw() {
    complain(QStringLiteral("this build draws no plots (Qt Charts or Qt Svg was missing); --csv "
                            "prints the numbers"));
    return false;
}

QString drawDiagram(const Diagram& /*diagram*/, const QString& /*file*/) { return {}; }

} // namespace irmcore::app
