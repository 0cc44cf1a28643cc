// Names of files and functions that no format can hold as they are.
template <typename T> T twice(T a) {
    return a + a; // OFF
}
