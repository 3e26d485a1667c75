#pragma once

namespace tessary {

/// Has the toolkit tell of our own widgets what it can't know by itself: of those that are made
/// from now on. Once is enough.
void installAccessibleInterfaces();

}  // namespace tessary
