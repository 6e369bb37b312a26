// The one function the loading tests look up.
extern "C" __attribute__((visibility("default"))) int qiro_sample_twice(int a_value) {
    return 2 * a_value;
}
