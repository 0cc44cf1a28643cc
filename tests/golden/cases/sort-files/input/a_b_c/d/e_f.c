int n25;
