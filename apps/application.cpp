#include "offscreen.h"
#include "pictures.h"

#include <QGuiApplication>

namespace irmcore::app {

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool draws) {
    if (draws)
        return makeOffscreen<QGuiApplication>(argc, argv);
    return std::make_unique<QCoreApplication>(argc, argv);
}

} // namespace irmcore::app
