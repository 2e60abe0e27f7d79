// The environment's variables by which a process knows that it belongs to a unit.
#pragma once

inline constexpr char kUnitVariable[] = "MAINTSIM_UNIT"; // the unit's folder, an absolute path
inline constexpr char kPreloadVariable[] = "LD_PRELOAD";
