#pragma once

// The road geometry and the display order travel by queued connections (and into
// signal spies); their container types are registered once here for every sender.
namespace RoadMetaTypes {
void registerAll();
}
