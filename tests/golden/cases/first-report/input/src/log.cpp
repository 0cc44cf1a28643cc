#include <vector>
void note(std::vector<int>& v, int i) {
    if (i < 0 && v.size() > 9)
        v.clear();
    v.push_back(i);
}
