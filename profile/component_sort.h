// Sorting the module list and cleaning it of duplicates.
#pragma once

struct COMP;

/// Sorts a list, then removes exact duplicates and sets isFirstOfFile and isAmbiguous. Returns the new head.
/// The memory of the duplicates is the caller's, as that of all records.
COMP* SortComponents(COMP* head);

/// By fileName, displayName, procName as unsigned bytes: negative, 0 or positive.
int compareComponets(const COMP* a, const COMP* b);

/// The second half of SortComponents, over a sorted list.
void eiliminateRedundantComponents(COMP* head);
