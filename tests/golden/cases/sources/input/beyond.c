int beyond(void)
{
}
