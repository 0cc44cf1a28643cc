int angle; // <<>>
