#include "statusline.h"

#include "fields.h"
#include "wording.h"

#include <QStatusBar>
#include <QStringList>

namespace irmcore::view {

namespace {

constexpr int messageTime = 6000; // ms

} // namespace

StatusLine::StatusLine(QStatusBar& bar)
    : QObject(&bar), m_state(new QLabel(QStringLiteral("Waiting for the camera…"))),
      m_pointer(new QLabel), m_message(new QLabel) {
    m_state->setObjectName(QStringLiteral("trouble"));
    m_pointer->setObjectName(QStringLiteral("pointer"));
    m_message->setObjectName(QStringLiteral("message"));
    // A long text does not widen the window; its tool tip has all of it.
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_message->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_message->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    for (QLabel* label : {m_state, m_pointer, m_message})
        label->setTextFormat(Qt::PlainText);
    m_state->setMargin(2);
    bar.addWidget(m_state, 3);
    bar.addWidget(m_pointer);
    bar.addWidget(m_message, 2);
    m_forget.setSingleShot(true);
    connect(&m_forget, &QTimer::timeout, m_message, &QLabel::clear);
}

void StatusLine::show(const Snapshot& snapshot, const QString& pointer) {
    const bool troubled = !snapshot.troubles.empty();
    QStringList troubles;
    for (const std::string& trouble : snapshot.troubles)
        troubles += fromLocal(trouble);
    const QString state = troubled ? QChar(0x26A0) + QStringLiteral("  ") + troubles.constFirst()
                                   : QStringLiteral("%1 %2 %3 pictures/s")
                                         .arg(fromLocal(snapshot.sourceName), QString(QChar(0xB7)))
                                         .arg(snapshot.framesASecond, 0, 'f', 1);
    setText(m_state, state);
    const QString all = troubles.join(QLatin1Char('\n'));
    if (m_state->toolTip() != all)
        m_state->setToolTip(all);
    if (troubled != m_troubled) {
        m_troubled = troubled;
        m_state->setStyleSheet(
            troubled ? QStringLiteral("background: #b3261e; color: white; border-radius: 3px;")
                     : QString());
    }
    setText(m_pointer, pointer);
}

void StatusLine::say(const QString& text) {
    m_message->setText(text);
    m_message->setToolTip(text);
    m_forget.start(messageTime);
}

} // namespace irmcore::view
