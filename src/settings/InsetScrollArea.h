#pragma once

#include <QMargins>
#include <QScrollArea>

class QVBoxLayout;

namespace kelp {

/// A column that scrolls in front of whatever lies behind it. The scroll bar has its place in the margin: nothing moves
/// when it appears.
class InsetScrollArea final : public QScrollArea
{
    Q_OBJECT

public:
    explicit InsetScrollArea(const QMargins &margins, QWidget *parent = nullptr);

    /// What scrolls; its margins are kept here.
    [[nodiscard]] QVBoxLayout &column() { return *m_column; }

private:
    void makeRoom();

    QMargins m_margins;
    QVBoxLayout *m_column;
};

} // namespace kelp
