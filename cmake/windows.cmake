# The Windows adapters and the COM component.
