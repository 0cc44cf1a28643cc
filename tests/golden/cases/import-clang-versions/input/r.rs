fn add(a: i32, b: i32) -> i32 {
    if a > b && b > 0 {
        return a;
    }
    a + b
}

struct Pair<T>(T, T);

impl<T: Copy> Pair<T> {
    fn first(&self) -> T {
        self.0
    }
}

fn never() -> u8 {
    3
}

fn main() {
    let pair = Pair(3, 4);
    let sum: i32 = (0..5).map(|x| if x % 2 == 0 { add(x, 2) } else { pair.first() }).sum();
    match sum {
        0 => println!("none {}", never()),
        n => println!("{}", n),
    }
}
