// SPDX-License-Identifier: Apache-2.0
// Loaded into the tests' server: what it writes goes when the test ends, and need not reach the
// disk before.
int fsync(int descriptor);
int fdatasync(int descriptor);

int fsync(int descriptor) {
    return descriptor < 0 ? -1 : 0;
}

int fdatasync(int descriptor) {
    return fsync(descriptor);
}
