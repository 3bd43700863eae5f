#pragma once

#include "ui/Element.h"

namespace kelp {

/// What an element does; one subclass per kind of element.
class Element::Node
{
public:
    virtual ~Node() = default;
    [[nodiscard]] virtual Arrangement arrange(double maxWidth) const = 0;
};

} // namespace kelp
