#pragma once

#include <windows.h>

namespace varnel::controls {

// What a step's marker shows: nothing, a turning ring of dots while the
// step runs, or a check mark once the step is reached.
enum class MarkerLook { None, Running, Reached };

// Paints an owner-drawn static as a step marker; `frame` turns the ring.
void PaintStepMarker(const DRAWITEMSTRUCT& item, MarkerLook look, int frame);

}  // namespace varnel::controls
