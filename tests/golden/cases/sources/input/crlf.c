int crlf(void)
{
	return 1;
}
