// net_bench: the receive path of TCPBuffer against a bare reader of lengths and bodies, over the
// loopback address.
int main() {
    return 0;
}
