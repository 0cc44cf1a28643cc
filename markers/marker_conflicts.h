// Markers that were given for two different roles.
#pragma once

/// Compares the three marker lists of the run configuration. Returns 1, after a message on standard error
/// that names the first text that stands in two of them, else 0.
unsigned int check_NFmarkers_intersect();
