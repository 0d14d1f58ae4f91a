// SPDX-License-Identifier: MIT
// The same without a network.
int main() {
  return 0;
}
