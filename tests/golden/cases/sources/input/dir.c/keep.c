int inside;
