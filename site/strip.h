// The strip beside a source: where in the file its marks are.
#pragma once

#include "common/text_buffer.h"
#include "site/code_survey.h"

/// Writes the strip as SVG of a fixed number of steps, each a link to the first marked line in it.
void put_strip(text_buffer& out, const code_survey& survey);
