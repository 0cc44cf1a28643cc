int crowd; // a table of more than a thousand entries
int end;
