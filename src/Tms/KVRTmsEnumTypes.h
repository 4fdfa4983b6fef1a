#pragma once

#include <cstdint>

// Code sets of the terminal-management messages. The numbers are the values
// the element classes hold; the writers turn them into four-letter codes.

// 0 doubles as "absent" in POIId, so "ACCP" is never written there.
enum KVRPartyType : uint32_t {
    KVRPartyTypeACCP = 0,
    KVRPartyTypeOPOI,
    KVRPartyTypeMERC,
    KVRPartyTypeACQR,
    KVRPartyTypeITAG,
    KVRPartyTypeMTMG,
    KVRPartyTypeTMGT,
};

// Starts at 1: 0 has no code and is refused when written.
enum KVRDataSetCategory : uint32_t {
    KVRDataSetCategoryAQPR = 1,
    KVRDataSetCategoryAPPR,
    KVRDataSetCategoryTXCP,
    KVRDataSetCategoryAKCP,
    KVRDataSetCategoryDLGT,
    KVRDataSetCategoryMGTP,
    KVRDataSetCategoryMRPR,
    KVRDataSetCategorySCPR,
    KVRDataSetCategorySWPK,
    KVRDataSetCategorySTRP,
    KVRDataSetCategoryTRPR,
    KVRDataSetCategoryVDPR,
};

enum KVRPoiComponentType : uint32_t {
    KVRPoiComponentTypeAQPP = 0,
    KVRPoiComponentTypeAPPR,
    KVRPoiComponentTypeTLPR,
    KVRPoiComponentTypeSCPR,
    KVRPoiComponentTypeSERV,
    KVRPoiComponentTypeTERM,
    KVRPoiComponentTypeDVCE,
    KVRPoiComponentTypeSECM,
    KVRPoiComponentTypeAPLI,
    KVRPoiComponentTypeEMVK,
    KVRPoiComponentTypeEMVO,
    KVRPoiComponentTypeMDWR,
    KVRPoiComponentTypeDRVR,
    KVRPoiComponentTypeOPST,
    KVRPoiComponentTypeMRPR,
};

enum KVRResultCode : uint32_t {
    KVRResultCodeACCD = 0,
    KVRResultCodeCNTE,
    KVRResultCodeFMTE,
    KVRResultCodeINVC,
    KVRResultCodeLENE,
    KVRResultCodeOVER,
    KVRResultCodeMISS,
    KVRResultCodeNSUP,
    KVRResultCodeSIGE,
    KVRResultCodeSUCC,
    KVRResultCodeSYNE,
    KVRResultCodeTIMO,
    KVRResultCodeUKDT,
    KVRResultCodeUKRF,
};

enum KVRTerminalManagementAction : uint32_t {
    KVRTerminalManagementActionACTV = 0,
    KVRTerminalManagementActionDCTV,
    KVRTerminalManagementActionDELT,
    KVRTerminalManagementActionDWNL,
    KVRTerminalManagementActionINST,
    KVRTerminalManagementActionRSTR,
    KVRTerminalManagementActionUPLD,
};
