Available network connection services in the current set (*=enabled):
* (Connected)      2B1E4C5D-0001-4A00-9000-000000000001 VPN (com.cisco.anyconnect) "Firmen-VPN (Zürich)"   [VPN:com.cisco.anyconnect]
* (Disconnected)   2B1E4C5D-0002-4A00-9000-000000000002 IPSec              "Heimnetz"                       [IPSec]
* (Connected)      2B1E4C5D-0003-4A00-9000-000000000003 VPN (io.tailscale.ipn.macsys) "Tailscale"          [VPN:io.tailscale.ipn.macsys]
