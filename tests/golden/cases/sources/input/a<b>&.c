int angle;
