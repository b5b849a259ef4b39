#pragma once

#include "../snapshot.h"

#include <QObject>
#include <QTimer>

class QLabel;
class QStatusBar;

namespace irmcore::view {

/// The status bar's contents: on the left what is wrong, else how the camera does; on the right
/// what the window has to say, for a while.
class StatusLine : public QObject {
    Q_OBJECT
public:
    explicit StatusLine(QStatusBar& bar);

    void show(const Snapshot& snapshot, const QString& pointer);
    void say(const QString& text);

private:
    QLabel* m_state;
    QLabel* m_pointer;
    QLabel* m_message;
    QTimer m_forget;
    bool m_troubled = false;
};

} // namespace irmcore::view
