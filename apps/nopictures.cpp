// In place of the drawing in a build without Qt's Gui.
#include "commands.h"
#include "pictures.h"

namespace irmcore::app {

namespace {

int noPictures() {
    complain(QStringLiteral("this build has no pictures (Qt Gui was missing)"));
    return exitErrors;
}

} // namespace

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool /*draws*/) {
    return std::make_unique<QCoreApplication>(argc, argv);
}

int drawDemo(const DemoPlan& /*plan*/, std::FILE* /*out*/) { return noPictures(); }

int drawPalettes(const QString& /*file*/) { return noPictures(); }

} // namespace irmcore::app
