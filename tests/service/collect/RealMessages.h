#pragma once

#include <string_view>

namespace quorbel::testing {

/// A message as a device sends it in one datagram, and the event that it becomes: its line in the
/// log file but for the time of receipt and the address in front of it.
struct RealMessage {
    std::string_view sent;
    std::string_view priority;
    std::string_view message;
};

/// A view of a literal with its NULs.
template <std::size_t N>
constexpr std::string_view bytes(const char (&literal)[N]) {
    return {literal, N - 1};
}

inline constexpr RealMessage kRealMessages[] = {
    // Routers and switches.
    {"<189>45: router1: 000041: *Mar  1 00:05:31.563: %LINEPROTO-5-UPDOWN: Fa0/1, state up",
     "Local7.Notice",
     "45: router1: 000041: *Mar  1 00:05:31.563: %LINEPROTO-5-UPDOWN: Fa0/1, state up"},
    {"<189>*Mar  1 18:46:11.123 UTC: %SYS-5-CONFIG_I: Configured from console", "Local7.Notice",
     "UTC: %SYS-5-CONFIG_I: Configured from console"},
    {"<189>.Nov 21 08:00:00.001: %SEC-6-IPACCESSLOGP: list 101 denied tcp 192.0.2.1(42)",
     "Local7.Notice", "%SEC-6-IPACCESSLOGP: list 101 denied tcp 192.0.2.1(42)"},
    {"<187>2087: RP/0/RSP0/CPU0:Nov 21 08:00:00.123 : ifmgr[219]: %PKT_INFRA-LINK-3-UPDOWN : down",
     "Local7.Error",
     "2087: RP/0/RSP0/CPU0:Nov 21 08:00:00.123 : ifmgr[219]: %PKT_INFRA-LINK-3-UPDOWN : down"},
    {"<187>: 2026 Nov 21 08:00:00.123 UTC: %ETHPORT-3-IF_DOWN_NONE: Ethernet1/1 is down (None)",
     "Local7.Error",
     ": 2026 Nov 21 08:00:00.123 UTC: %ETHPORT-3-IF_DOWN_NONE: Ethernet1/1 is down (None)"},
    {"<30>Nov 21 08:00:00 re0 mib2d[1234]: SNMP_TRAP_LINK_DOWN: ifIndex 510, ifName ge-0/0/1",
     "Daemon.Informational", "mib2d[1234]: SNMP_TRAP_LINK_DOWN: ifIndex 510, ifName ge-0/0/1"},
    {R"(<14>1 2026-11-21T08:00:00.123Z re0 mgd 2468 UI_CFG [j@2636.1.1 user="a" delta=""] set: x)",
     "User.Informational", R"(UI_CFG [j@2636.1.1 user="a" delta=""] mgd[2468]: set: x)"},
    {"<190>Nov 21 08:00:00 192.0.2.20 00077 ports: port 24 is now off-line", "Local7.Informational",
     "00077 ports: port 24 is now off-line"},
    {"<141>Nov 21 08:00:00 2026 ctl1 authmgr[3456]: <522008> <NOTI> User Authentication",
     "Local1.Notice", "ctl1 authmgr[3456]: <522008> <NOTI> User Authentication"},
    {"<189>Nov 21 2026 08:00:00 sw1 %%01INFO/4/SUPPRESS_LOG(l)[0]:Last message repeated 2 times.",
     "Local7.Notice", "%%01INFO/4/SUPPRESS_LOG(l)[0]:Last message repeated 2 times."},
    {"<189>Nov 21 08:00:00: %STKUNIT0-M:CP %IFMGR-5-ASTATE_DN: Changed to down: Te 0/1",
     "Local7.Notice", "%STKUNIT0-M:CP %IFMGR-5-ASTATE_DN: Changed to down: Te 0/1"},
    {"<190>Nov 21 08:00:00 EPM: <Info:HAL.Card> Slot 1 is up", "Local7.Informational",
     "EPM: <Info:HAL.Card> Slot 1 is up"},
    {"<134>Nov 21 08:00:00 sw0 raslogd: 2026/11/21-08:00:00, [SEC-1203], 123,, INFO, sw0, Login",
     "Local0.Informational", "raslogd: 2026/11/21-08:00:00, [SEC-1203], 123,, INFO, sw0, Login"},
    {"<30>dhcp,info dhcp1 assigned 192.0.2.30 for 00:11:22:33:44:55", "Daemon.Informational",
     "dhcp,info dhcp1 assigned 192.0.2.30 for 00:11:22:33:44:55"},
    {"<30>Nov 21 08:00:00 gw user admin logged in from 192.0.2.9 via ssh", "Daemon.Informational",
     "user admin logged in from 192.0.2.9 via ssh"},
    // Access points and small devices.
    {"<4>Nov 21 08:00:00 UAP,b4fbe4aabbcc,v4.3.20 kernel: [12.3] wifi0: beacon stuck",
     "Kern.Warning", "UAP,b4fbe4aabbcc,v4.3.20 kernel: [12.3] wifi0: beacon stuck"},
    {"<30>Nov 21 08:00:00 dnsmasq-dhcp[1234]: DHCPACK(br-lan) 192.0.2.30", "Daemon.Informational",
     "dnsmasq-dhcp[1234]: DHCPACK(br-lan) 192.0.2.30"},
    {"<133>Nov 21 08:00:00 UPS: On battery power. 0x0109", "Local0.Notice",
     "UPS: On battery power. 0x0109"},
    {"<134>printer: paper out", "Local0.Informational", "printer: paper out"},
    {"<14>Nov 21 08:00:00 NAS1 Connection: User [admin] from [192.0.2.9] logged in",
     "User.Informational", "Connection: User [admin] from [192.0.2.9] logged in"},
    // Firewalls and load balancers.
    {"<166>Nov 21 2026 08:00:00: %ASA-6-302013: Built outbound TCP connection 123, outside",
     "Local4.Informational", "%ASA-6-302013: Built outbound TCP connection 123, outside"},
    {"<166>Nov 21 2026 08:00:00 fw1 : %ASA-6-302014: Teardown TCP connection 123",
     "Local4.Informational", ": %ASA-6-302014: Teardown TCP connection 123"},
    {R"(<189>date=2026-11-21 time=08:00:00 devname="FW1" logid="0000000013" type="traffic")",
     "Local7.Notice",
     R"(date=2026-11-21 time=08:00:00 devname="FW1" logid="0000000013" type="traffic")"},
    {"<14>Nov 21 08:00:00 PA-220 1,2026/11/21 08:00:00,012345678901,THREAT,url,,,192.0.2.1",
     "User.Informational", "1,2026/11/21 08:00:00,012345678901,THREAT,url,,,192.0.2.1"},
    {R"(<134>1 2026-11-21T08:00:00Z gw1 fw 18160 - [action:"Accept"; ifdir:"inbound"])",
     "Local0.Informational", R"([action:"Accept"; ifdir:"inbound"] fw[18160]:)"},
    {R"(<134>id=firewall sn=0006B1 time="2026-11-21 08:00:00" pri=6 m=98 msg="Opened")",
     "Local0.Informational",
     R"(id=firewall sn=0006B1 time="2026-11-21 08:00:00" pri=6 m=98 msg="Opened")"},
    {R"(<140>Nov 21 08:00:00 FB1 80AB12 firewall: msg_id="3000-0148" Allow, 1-Trusted)",
     "Local1.Warning", R"(80AB12 firewall: msg_id="3000-0148" Allow, 1-Trusted)"},
    {"<134>Nov 21 08:00:00 filterlog[12345]: 5,,,1000000103,igb0,match,block,in,4,0x0,,64",
     "Local0.Informational", "filterlog[12345]: 5,,,1000000103,igb0,match,block,in,4,0x0,,64"},
    {"<134>1 2026-11-21T08:00:00.123456+01:00 pf.example filterlog 123 - - 5,,,1000000103,igb0",
     "Local0.Informational", "filterlog[123]: 5,,,1000000103,igb0"},
    {"<134> 11/21/2026:08:00:00 GMT ns 0-PPE-0 : default TCP CONN_TERMINATE 123 0 : Source",
     "Local0.Informational",
     " 11/21/2026:08:00:00 GMT ns 0-PPE-0 : default TCP CONN_TERMINATE 123 0 : Source"},
    {"<133>Nov 21 08:00:00 lb1 notice mcpd[5050]: 01070638:5: Pool member down", "Local0.Notice",
     "notice mcpd[5050]: 01070638:5: Pool member down"},
    {"<13>Nov 21 08:00:00 [node1:wafl.scan.done:info]: scan done", "User.Notice",
     "[node1:wafl.scan.done:info]: scan done"},
    {R"(<134>Nov 21 08:00:00 ids1 suricata[12]: {"alert":{"severity":1},"proto":"TCP"})",
     "Local0.Informational", R"(suricata[12]: {"alert":{"severity":1},"proto":"TCP"})"},
    {"<134>CEF:0|Maker|Product|1.0|100|name|5|src=192.0.2.1 msg=a\\=b", "Local0.Informational",
     "CEF:0|Maker|Product|1.0|100|name|5|src=192.0.2.1 msg=a\\=b"},
    {"<134>Nov 21 08:00:00 192.0.2.9 LEEF:1.0|M|P|1|2|cat=x\tsev=5", "Local0.Informational",
     "LEEF:1.0|M|P|1|2|cat=x#011sev=5"},
    // Computers.
    {"<86>Nov 21 08:00:00 web1 sshd[123]: Accepted publickey for root from 192.0.2.9 port 4242",
     "Authpriv.Informational", "sshd[123]: Accepted publickey for root from 192.0.2.9 port 4242"},
    {"<78>Nov 21 08:00:01 web1 CRON[99]: (root) CMD (run-parts /etc/cron.hourly)",
     "Cron.Informational", "CRON[99]: (root) CMD (run-parts /etc/cron.hourly)"},
    {"<22>Nov 21 08:00:00 mx postfix/smtpd[77]: connect from unknown[192.0.2.8]",
     "Mail.Informational", "postfix/smtpd[77]: connect from unknown[192.0.2.8]"},
    {"<4>Nov 21 08:00:00 web1 kernel: [   12.345678] Out of memory: Killed process 12",
     "Kern.Warning", "kernel: [   12.345678] Out of memory: Killed process 12"},
    {"<27>Nov 21 08:00:00 mac com.apple.xpc.launchd[1] (com.x[2]): Service exited", "Daemon.Error",
     "com.apple.xpc.launchd[1] (com.x[2]): Service exited"},
    {"<166>2026-11-21T08:00:00.123Z esx1.example Hostd: info hostd[2099] [sub=Vimsvc] Login",
     "Local4.Informational", "Hostd: info hostd[2099] [sub=Vimsvc] Login"},
    {"<14>Nov 21 08:00:00 win1 MSWinEventLog\t1\tSecurity\t123\tLogon", "User.Informational",
     "MSWinEventLog#0111#011Security#011123#011Logon"},
    {R"(<13>1 2026-11-21T08:00:00.123456+01:00 win1 Auditing 4 - [N@14506 ID="4624"] Logged on.)",
     "User.Notice", R"([N@14506 ID="4624"] Auditing[4]: Logged on.)"},
    {"<46>Nov 21 08:00:00 web1 last message repeated 3 times", "Syslog.Informational",
     "last message repeated 3 times"},
    // The examples of RFC 3164 and RFC 5424.
    {"<34>Oct 11 22:14:15 mymachine su: 'su root' failed for lonvick on /dev/pts/8",
     "Auth.Critical", "su: 'su root' failed for lonvick on /dev/pts/8"},
    {"Use the BFG!", "User.Notice", "Use the BFG!"},
    {"<13>Feb  5 17:32:18 10.0.0.99 Use the BFG!", "User.Notice", "Use the BFG!"},
    {"<34>1 2003-10-11T22:14:15.003Z mymachine.example.com su - ID47 - \xEF\xBB\xBF'su root' "
     "failed",
     "Auth.Critical", "ID47 su: 'su root' failed"},
    {"<165>1 2003-08-24T05:14:15.000003-07:00 192.0.2.1 myproc 8710 - - %% do-nuts. %%",
     "Local4.Notice", "myproc[8710]: %% do-nuts. %%"},
    // Parts that are missing.
    {"<14>", "User.Informational", "-"},
    {"<14> ", "User.Informational", " "},
    {"<14>-", "User.Informational", "-"},
    {"<14>Nov 21 08:00:00", "User.Informational", "-"},
    {"<14>1 - - - - - -", "User.Informational", "-"},
    {"<14>1 - - - - - - \xEF\xBB\xBF", "User.Informational", "-"},
    {"<14>1 2026-11-21T08:00:00Z h", "User.Informational", "h"},
    {"<14>Nov 21 08:00:00 h", "User.Informational", "h"},
    {"no priority at all, but commas,,", "User.Notice", "no priority at all, but commas,,"},
    {"<192>Nov 21 08:00:00 h t: x", "User.Notice", "<192>Nov 21 08:00:00 h t: x"},
    {"<14", "User.Notice", "<14"},
    {"15 <14>counted text", "User.Notice", "15 <14>counted text"},
    // Dates that do not exist, and moments that do not exist everywhere, or twice: an event bears
    // the time of its receipt.
    {"<14>Feb 31 25:61:61 h t: x", "User.Informational", "t: x"},
    {"<14>Feb 29 23:59:59 h t: leap day", "User.Informational", "t: leap day"},
    {"<14>Dec 31 23:59:60 h t: leap second", "User.Informational", "t: leap second"},
    {"<14>Jan  1 00:00:00 h t: new year", "User.Informational", "t: new year"},
    {"<14>Mar 29 02:30:00 h t: skipped hour", "User.Informational", "t: skipped hour"},
    {"<14>Oct 25 02:30:00 h t: hour that comes twice", "User.Informational",
     "t: hour that comes twice"},
    {"<14>1 2026-13-45T99:99:99Z h a - - - x", "User.Informational", "a: x"},
    {"<14>1 1969-12-31T23:59:59Z h a - - - x", "User.Informational", "a: x"},
    {"<14>Xyz 11 22:14:15 h t: x", "User.Informational", "Xyz 11 22:14:15 h t: x"},
    {"<14>Nov 111 22:14:15 h t: x", "User.Informational", "Nov 111 22:14:15 h t: x"},
    // Bytes that the log files do not take as they are.
    {"<14>Nov 21 08:00:00 h app: Gr\xC3\xBC\xC3\x9F"
     "e",
     "User.Informational",
     "app: Gr\xC3\xBC\xC3\x9F"
     "e"},
    {"<14>Nov 21 08:00:00 h app: Gr\xFC\xDF"
     "e",
     "User.Informational",
     "app: Gr\xEF\xBF\xBD\xEF\xBF\xBD"
     "e"},
    {"<14>overlong \xC0\xAF and half \xE2\x82", "User.Informational",
     "overlong \xEF\xBF\xBD\xEF\xBF\xBD and half \xEF\xBF\xBD\xEF\xBF\xBD"},
    {"<14>t: \x1B[31mred\x1B[0m \x07", "User.Informational", "t: #033[31mred#033[0m #007"},
    {"<14>t: \x7F \xC2\x85 \xEF\xBF\xBE", "User.Informational", "t: #177 #205 \xEF\xBF\xBD"},
    {bytes("<14>t: a\0b\0"), "User.Informational", "t: a#000b"},
    {"\xEF\xBB\xBF<14>t: mark in front", "User.Informational", "t: mark in front"},
    {"<14>t: a\r\nb\r\n", "User.Informational", "t: a#015#012b"},
    {"<14>,,leading and trailing,,", "User.Informational", ",,leading and trailing,,"},
    {"<14>x\r\n1700000000,Kern.Emergency,192.0.2.66,forged\r\n", "User.Informational",
     "x#015#0121700000000,Kern.Emergency,192.0.2.66,forged"},
    {"<14>x\n<8>y", "User.Informational", "x#012<8>y"},
    {"<14>a#012b is no escape", "User.Informational", "a#012b is no escape"},
};

}  // namespace quorbel::testing
