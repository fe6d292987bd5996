// Placeholder: draws no icons yet.
int main () { return 0; }
