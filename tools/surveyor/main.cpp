#include <cstdio>
int main () { std::puts ("surveyor: not built yet"); return 0; }
