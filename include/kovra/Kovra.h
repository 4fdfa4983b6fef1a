#pragma once

// Everything an application needs: the providers, the records they return,
// errors, settings, threads and notifications.
#include <kovra/KVRAddress.h>
#include <kovra/KVRAddressModel.h>
#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRCardProvider.h>
#include <kovra/KVRCompletion.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRError.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRException.h>
#include <kovra/KVRJournalEntry.h>
#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRMerchantListProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRNumber.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRStoreProvider.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransacInfoProvider.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>
#include <kovra/KVRUserInfoProvider.h>
#include <kovra/KVRValidationProvider.h>
#include <kovra/KVRVersion.h>
