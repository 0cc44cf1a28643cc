// The progress meter: percentages on standard output while the modules are processed.
#pragma once

/// Starts a meter for `total` ticks that prints every `percent` per cent.
void tickInitTick(int total, int percent);

/// Counts one tick and prints when it is due.
void tickTick();
