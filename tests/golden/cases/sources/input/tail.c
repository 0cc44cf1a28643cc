int a;
	int b; 	// no newline <&> €ÿ