int few;
