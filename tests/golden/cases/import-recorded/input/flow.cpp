// Control flow for the importer's tests; flow.json is its recorded export.
static int branches(int a, int b) {
    if (a && b)
        return 1;
    if (a > 5) {
        a = 0;
    } else if (b) {
        a = 1;
    } else
        a = 2;
    // comment between the statements
    int t = a ? b : 3;
    return t;
}

static int loops(int n) {
    int sum = 0;
    for (int i = 0; i < n; ++i)
        sum += i;
    while (sum > 10) {
        sum -= 4;
    }
    do {
        ++sum;
    } while (sum < n || sum < 3);
    sum *= 2;
    return sum;
}

static int choose(int k) {
    int result = 0;
    switch (k) {
    case 1:
        result = 1;
        break;
    case 2:
    default:
        result = 2;
    }
    try {
        if (k == 9)
            throw k;
        result += 1;
    } catch (int) {
        result = 9;
    }
    return result;
}

static int straight() { return 1; }

int never_called(int a) {
    if (a)
        return straight();
    return 0;
}

int main() { return branches(1, 0) + loops(3) + choose(1) + choose(2) + straight() > 99; }
