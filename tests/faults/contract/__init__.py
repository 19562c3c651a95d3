"""What the tool has to print, written down once more: from the results of its calls to every byte.

The modules follow the contract of each option. They share no code with the tool.
"""
