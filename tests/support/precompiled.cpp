// SPDX-License-Identifier: Apache-2.0
// The program whose build compiles the headers that all tests share; it is never run.
int main() {
    return 0;
}
