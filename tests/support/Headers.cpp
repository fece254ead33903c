// The headers of all tests are precompiled for this source.
int main() { return 0; }
