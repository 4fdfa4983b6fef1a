#pragma once

#include <cstdint>

// The ISO 20022 code sets carried by the acquirer messages. Each value is the
// row of its code in KVREnumParser's tables; the numbers are stored in the
// transaction records and compared elsewhere, so the order must never change.

enum KVRContentType : int32_t {
    KVRContentTypeDATA = 0,
    KVRContentTypeSIGN,
    KVRContentTypeEVLP,
    KVRContentTypeDGST,
    KVRContentTypeECRP,
    KVRContentTypeAUTH,
};

enum KVRAuthenticationMethod : int32_t {
    KVRAuthenticationMethodBYPS = 0,
    KVRAuthenticationMethodMANU,
    KVRAuthenticationMethodMERC,
    KVRAuthenticationMethodFPIN,
    KVRAuthenticationMethodNPIN,
    KVRAuthenticationMethodPPSG,
    KVRAuthenticationMethodPSWD,
    KVRAuthenticationMethodSCRT,
    KVRAuthenticationMethodSCNL,
    KVRAuthenticationMethodSNCT,
    KVRAuthenticationMethodCPSG,
    KVRAuthenticationMethodUKNW,
};

enum KVRCardholderIdentificationType : int32_t {
    KVRCardholderIdentificationPASS = 0,
    KVRCardholderIdentificationDRLC,
    KVRCardholderIdentificationEEID,
    KVRCardholderIdentificationDRVR,
};

enum KVRContextAttendance : int32_t {
    KVRContextAttendanceATTD = 0,
    KVRContextAttendanceSATT,
    KVRContextAttendanceUATT,
};

enum KVRTransactionEnvironment : int32_t {
    KVRTransactionEnvironmentMERC = 0,
    KVRTransactionEnvironmentPRIV,
    KVRTransactionEnvironmentPUBL,
};

// Values 2 and 3 both travel as "TVPY".
enum KVRTransactionChannel : int32_t {
    KVRTransactionChannelTLPH = 0,
    KVRTransactionChannelECOM,
    KVRTransactionChannelTVPY,
    KVRTransactionChannelTVPYAlternate,
};

enum KVRPoiCardDataReading : int32_t {
    KVRPoiCardDataReadingTAGC = 0,
    KVRPoiCardDataReadingPHYS,
    KVRPoiCardDataReadingBRCD,
    KVRPoiCardDataReadingMGST,
    KVRPoiCardDataReadingCICC,
    KVRPoiCardDataReadingDFLE,
    KVRPoiCardDataReadingCTLS,
    KVRPoiCardDataReadingECTL,
};

enum KVRInstalmentType : int32_t {
    KVRInstalmentTypeNONE = 0,
    KVRInstalmentTypeMCHT,
    KVRInstalmentTypeISSR,
};

enum KVRAccountType : int32_t {
    KVRAccountTypeDFLT = 0,
    KVRAccountTypeSVNG,
    KVRAccountTypeCHCK,
    KVRAccountTypeCRDT,
    KVRAccountTypeUVRL,
    KVRAccountTypeINVS,
    KVRAccountTypeEPRS,
};

// "RJCT" is written but reads back as 0: rejections are told by the response code.
enum KVRMessageFunction : int32_t {
    KVRMessageFunctionAUTQ = 0,
    KVRMessageFunctionAUTP,
    KVRMessageFunctionFAUQ,
    KVRMessageFunctionFAUP,
    KVRMessageFunctionCMPV,
    KVRMessageFunctionCMPK,
    KVRMessageFunctionFCMV,
    KVRMessageFunctionFCMK,
    KVRMessageFunctionRVRA,
    KVRMessageFunctionRVRR,
    KVRMessageFunctionFRVA,
    KVRMessageFunctionFRVR,
    KVRMessageFunctionCCAQ,
    KVRMessageFunctionCCAP,
    KVRMessageFunctionCCAV,
    KVRMessageFunctionCCAK,
    KVRMessageFunctionDGNP,
    KVRMessageFunctionDGNQ,
    KVRMessageFunctionRCLQ,
    KVRMessageFunctionRCLP,
    KVRMessageFunctionRJCT,
};

// One set for both the party type and the party issuer.
enum KVRInitiatingParty : int32_t {
    KVRInitiatingPartyOPOI = 0,
    KVRInitiatingPartyMERC,
    KVRInitiatingPartyACCP,
    KVRInitiatingPartyITAG,
    KVRInitiatingPartyACQR,
    KVRInitiatingPartyCISS,
    KVRInitiatingPartyDLIS,
};

// Code sets that are only read.

enum KVRAmountType : int32_t {
    KVRAmountTypeCSHB = 0,
    KVRAmountTypeGRTY,
    KVRAmountTypeFEES,
    KVRAmountTypeRBTS,
    KVRAmountTypeVATX,
};

enum KVRResponseCode : int32_t {
    KVRResponseCodeDECL = 0,
    KVRResponseCodeAPPR,
    KVRResponseCodePART,
    KVRResponseCodeTECH,
};

enum KVRUserInterface : int32_t {
    KVRUserInterfaceCDSP = 0,
    KVRUserInterfaceCRCP,
    KVRUserInterfaceMDSP,
    KVRUserInterfaceMRCP,
};

enum KVRActionType : int32_t {
    KVRActionTypeBUSY = 0,
    KVRActionTypeCPTR,
    KVRActionTypeDISP,
    KVRActionTypeNOVR,
    KVRActionTypeRQID,
    KVRActionTypePINL,
    KVRActionTypePINR,
    KVRActionTypePRNT,
    KVRActionTypeRFRL,
    KVRActionTypeRQDT,
};
