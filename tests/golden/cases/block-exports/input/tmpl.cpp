template <class T> void f(T) {}
