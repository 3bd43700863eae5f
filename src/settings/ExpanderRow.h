#pragma once

#include "settings/HoverRow.h"

namespace kelp {

/// A row that shows and hides what belongs to it when it is clicked; assistive technology is told which.
class ExpanderRow final : public HoverRow
{
    Q_OBJECT

public:
    explicit ExpanderRow(const QString &name, QWidget *parent = nullptr);

    [[nodiscard]] bool isExpanded() const { return m_isExpanded; }
    void setExpanded(bool isExpanded);

private:
    bool m_isExpanded = false;
};

} // namespace kelp
