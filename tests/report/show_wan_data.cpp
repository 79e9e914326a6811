// Prints what the module finds about this machine's PPP link; for ppp0_namespace.sh.
#include <cstdio>

#include "include/zop_diag_info.h"
#include "report/wan_data.h"

int main() {
  prv_get_wan_data();
  const zop_diag_info& d = gDiagInfo;
  printf("local %s\npeer %s\nrx %u\ntx %u\npppd %u\nresolver %u\n", d.local_address, d.peer_address,
         d.rx_bytes, d.tx_bytes, d.pppd_pid, d.name_servers[0]);
}
