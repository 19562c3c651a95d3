"""The menus, and the vocabulary of device types."""

OPTIONS = (
    "PICPWR info", "CIR payloads", "OEM area", "Riser slot mapping blob", "Control registers",
    "PICPWR nodes info", "Discoverable nodes info", "All I2C nodes info",
    "Create dynamic device node", "Delete dynamic device node", "DBUS Zolt Info Properties",
    "DBUS Zolt CIR Properties", "Read Node Proprty", "Update Node Property",
    "Perform Bus Recovery",
)
RULE = "-" * 48 + "\n"
MAIN_MENU = (
    "\n" + RULE + "ZOLT Test Tool\n" + RULE
    + "".join(f"{number:3} : {label}\n" for number, label in enumerate(OPTIONS, 1))
    + "100 : Exit \nEnter option :"
)


def menu(labels):
    return "".join(f"{number:2} : {label}\n" for number, label in enumerate(labels, 1))


CLASS_MENU = menu((
    "1C Connector", "4C+ Connector", "KARN Downstream of FLOP", "M.2 Card Downstream Of FLOP",
    "TULMs Downstream Of BP", "Backplane", "CEM Risers", "KARN", "M.2 Interposer", "RIDA", "PUCK",
    "RFC", "FLOP", "Battery Interposer", "All module classes",
)) + "Enter the module class :"

TYPE_MENU = menu((
    "Backplane", "PUCK", "RFC", "Riser", "FTULM", "KARN_RAID", "KARN_NON_RAID", "RIDA", "FLOP",
    "Battery interposer", "Battery",
)) + "Enter the module type :\n"

# The names by code, from 0 on.
NAMES = (
    "fSCP KARN CPUVR DIMM DP HPM_AUTH_IC HPM_FRU OCP_NIC PCP PCP_AIR_TEMP PDB_MGMT PIROM PSU RTC SL "
    "VGA PICPWR SCP RSR BP FTULM KARN_RAID KARN_NON_RAID RIDA PUCK RFC FLOP BI LLD SLOT IMON "
    "FAN_MCU BATT CKMNG EDIB_TEMP EDID ETHSW_EEPROM I2C_SW LCD LCP_KVM LCP_AIR_TEMP MCU ME "
    "MP_EEPROM PDB_PLD PLANAR_EEPROM POUT RCP_AIR_TEMP SEP TPM APML CPU_SEC HEADER MISC OLS LLS "
    "FAN_IMON PSU_CON"
).split()
OTHER_LABELS = {0: "FSCP", 19: "Backplane", 58: "FTULM_FRU", 59: "All device types"}

DEVICE_MENU = "".join(
    f"{code:2} : {OTHER_LABELS.get(code) or NAMES[code]}\n" for code in range(60)
) + "Enter the device type :"


def device_name(code):
    if code == 68:
        return "FTULM_FRU"
    return NAMES[code] if 0 <= code < len(NAMES) else ""
