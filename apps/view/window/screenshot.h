#pragma once

#include "mainwindow.h"

#include <QTimer>

namespace irmcore::view {

/// Waits until a window shows a camera at work, writes a picture of it, and ends the application:
/// with 0, or with 2 and a text on standard error.
class Screenshot : public QObject {
public:
    /// The window outlives it.
    Screenshot(MainWindow& window, QString file);

private:
    void look();
    void write();

    MainWindow& m_window;
    QString m_file;
    QTimer m_timer;
    int m_looks = 0;
};

} // namespace irmcore::view
