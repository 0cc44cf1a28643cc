// The fixed resources of a report: tool bar, help page and images.
#pragma once

/// Writes the four images, the help page and the tool bar into the report directory, once a run, before the
/// first module. Returns false, after a message on standard error, when one of them cannot be created.
bool createToolBar(const char* ext);
