import sys

def used(x):
    if x:
        return 1
    return 2

def unused():
    return 3

class Thing:
    def method(self):
        def inner():
            return 4
        return inner()

used(1)
