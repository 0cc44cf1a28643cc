// Sorting the module list and cleaning it of duplicates.
#pragma once

struct COMP;

/// Sorts a list, then removes exact duplicates and sets isFirstOfFile and isAmbiguous. Returns the new head.
/// The duplicates are put in front of the chain `*dropped`. When memory runs out, the list is as it was.
COMP* SortComponents(COMP* head, COMP** dropped);

/// By fileName, displayName, procName as unsigned bytes: negative, 0 or positive.
int compareComponets(const COMP* a, const COMP* b);

/// The second half of SortComponents, over a sorted list.
void eiliminateRedundantComponents(COMP* head, COMP** dropped);
