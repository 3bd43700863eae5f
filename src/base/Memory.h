#pragma once

#include <cstddef>

/// A process that shows something large now and then, and must be small in between.
namespace kelp::memory {

/// Lets pictures have memory of their own, which goes back to the system as soon as they go. Without it the C library
/// learns from the first large picture to put the next ones among the small things. Called first of all.
void keepPicturesApart();

/// Gives back what is not in use any more. Takes about a millisecond.
void giveBack();

/// Takes the pages of fresh memory that is about to be written as a whole in one go. Else the system is interrupted
/// once for each of them, which costs several times what is then written, on virtual machines more than ten times.
/// Large pages are asked for. Does nothing where the system (before Linux 5.14) does not know how.
void populate(void *memory, std::size_t bytes);

} // namespace kelp::memory
