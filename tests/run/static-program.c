/*
 * A program that no library can be preloaded into.
 */
int main(void) {
    return 0;
}
