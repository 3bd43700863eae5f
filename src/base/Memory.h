#pragma once

/// A process that shows something large now and then, and must be small in between.
namespace kelp::memory {

/// Lets pictures have memory of their own, which goes back to the system as soon as they go. Without it the C library
/// learns from the first large picture to put the next ones among the small things. Called first of all.
void keepPicturesApart();

/// Gives back what is not in use any more. Takes about a millisecond.
void giveBack();

} // namespace kelp::memory
