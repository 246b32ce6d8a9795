#include <iostream>

int main() {
  std::cerr << "velmora: no command yet\n";
  return 2;
}
