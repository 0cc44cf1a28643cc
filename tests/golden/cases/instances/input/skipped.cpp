// clang from version 19 on tells what an instance has discarded like what the preprocessor has taken out.
template <bool Wide> int scale(int x) {
    if constexpr (Wide) {
        if (x > 3)
            x = 2;
        x += 4;
    }
    return x;
}
int main() {
    return scale<true>(1) - scale<false>(5);
}
