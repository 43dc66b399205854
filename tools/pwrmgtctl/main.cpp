// SPDX-License-Identifier: Apache-2.0
// pwrmgtctl: the command line of the power data layer. Documents go to standard output, errors in
// words to standard error.
#include "show.h"

int main(int argc, char** argv) {
    pwrmgt::common::StdoutGuard standard_output;
    return pwrmgt::pwrmgtctl::show(pwrmgt::pwrmgtctl::parse(argc, argv), standard_output);
}
