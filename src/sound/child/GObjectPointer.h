#pragma once

#include <glib-object.h>

#include <memory>

namespace kelp {

struct UnrefObject
{
    void operator()(void *object) const { g_object_unref(object); }
};

/// Owns one reference.
template<typename T>
using GObjectPointer = std::unique_ptr<T, UnrefObject>;

struct Free
{
    void operator()(void *memory) const { g_free(memory); }
};
using GText = std::unique_ptr<char, Free>;

} // namespace kelp
