// A library with nothing in it but this.
extern "C" int quorvelBenchEmpty();
extern "C" int quorvelBenchEmpty() {
    return 0;
}
