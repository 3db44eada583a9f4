// A program that does nothing, to tell what starting and ending any costs.

int main() { return 0; }
